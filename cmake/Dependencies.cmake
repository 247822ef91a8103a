# Every library that the program stands on, each as one imported target. ARCHITECTURE.md says why it is here.
find_package(PkgConfig REQUIRED)
find_package(fmt REQUIRED)
find_package(Boost 1.81 REQUIRED COMPONENTS json)

pkg_check_modules(GIO REQUIRED IMPORTED_TARGET gio-2.0>=2.74 gio-unix-2.0)
pkg_check_modules(ADWAITA REQUIRED IMPORTED_TARGET libadwaita-1>=1.2)
pkg_check_modules(GTK REQUIRED IMPORTED_TARGET gtk4>=4.8 gtk4-unix-print)
pkg_check_modules(WEBKIT REQUIRED IMPORTED_TARGET webkitgtk-6.0>=2.50)
pkg_check_modules(WEBKIT_EXTENSION REQUIRED IMPORTED_TARGET webkitgtk-web-process-extension-6.0>=2.50)
pkg_check_modules(SOUP REQUIRED IMPORTED_TARGET libsoup-3.0)
pkg_check_modules(ICU REQUIRED IMPORTED_TARGET icu-i18n icu-uc)
pkg_check_modules(XML REQUIRED IMPORTED_TARGET libxml-2.0)
pkg_check_modules(X11 REQUIRED IMPORTED_TARGET x11)
