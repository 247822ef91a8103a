#pragma once

#include "platform/linux/glib/Ref.h"

#include <gio/gio.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace ondrel::support {

// A message bus of a test's own, which starts no services but those of its own folder, whatever is installed
// on the machine. Ends with the object.
class TestBus {
 public:
  TestBus() {
    const auto configuration = folder_ / "bus.conf";
    std::filesystem::create_directory(folder_ / "services");
    std::ofstream(configuration) << "<busconfig><type>session</type><listen>unix:dir=" << folder_.string()
                                 << "</listen><servicedir>" << (folder_ / "services").string()
                                 << "</servicedir><policy context=\"default\"><allow send_destination=\"*\"/>"
                                    "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
    glib::Error error;
    daemon_ = glib::adopt(g_subprocess_new(
        static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE | G_SUBPROCESS_FLAGS_STDERR_SILENCE),
        error.out(), "dbus-daemon", "--nofork", ("--config-file=" + configuration.string()).c_str(),
        "--print-address", nullptr));
    if (!daemon_)
      throw std::runtime_error(error.message());
    const auto lines = glib::adopt(g_data_input_stream_new(g_subprocess_get_stdout_pipe(daemon_.get())));
    const glib::CString line(g_data_input_stream_read_line(lines.get(), nullptr, nullptr, nullptr));
    if (!line)
      throw std::runtime_error("the message bus does not start");
    address_ = line.get();
  }
  TestBus(const TestBus&) = delete;
  TestBus& operator=(const TestBus&) = delete;
  ~TestBus() {
    stop();
    std::filesystem::remove_all(folder_);
  }

  void stop() {
    g_subprocess_force_exit(daemon_.get());
    g_subprocess_wait(daemon_.get(), nullptr, nullptr);
  }

  const std::string& address() const { return address_; }

  // From now on the bus starts `command` for whoever calls that name.
  void addService(const std::string& name, const std::string& command) const {
    std::ofstream(folder_ / "services" / (name + ".service"))
        << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
    const auto bus = connect();
    call(bus, "ReloadConfig", nullptr);
  }

  // One more that takes part. Its synchronous calls need no main loop.
  glib::Ref<GDBusConnection> connect() const { return connectTo(address_); }
  static glib::Ref<GDBusConnection> connectTo(const std::string& address) {
    glib::Error error;
    auto connection = glib::adopt(
        g_dbus_connection_new_for_address_sync(address.c_str(), flags, nullptr, nullptr, error.out()));
    if (!connection)
      throw std::runtime_error(error.message());
    return connection;
  }
  static constexpr auto flags = static_cast<GDBusConnectionFlags>(
      G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT | G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION);

  static void ownName(const glib::Ref<GDBusConnection>& connection, const char* name) {
    constexpr guint32 doNotQueue = 4;
    call(connection, "RequestName", g_variant_new("(su)", name, doNotQueue));
  }
  static void releaseName(const glib::Ref<GDBusConnection>& connection, const char* name) {
    call(connection, "ReleaseName", g_variant_new("(s)", name));
  }
  // Comes back when the bus has passed on all that was sent before.
  static void roundTrip(const glib::Ref<GDBusConnection>& connection) { call(connection, "GetId", nullptr); }

 private:
  static void call(const glib::Ref<GDBusConnection>& connection, const char* method, GVariant* arguments) {
    glib::Error error;
    const glib::Owned<GVariant> reply(g_dbus_connection_call_sync(
        connection.get(), "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
        arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, error.out()));
    if (!reply)
      throw std::runtime_error(error.message());
  }

  static std::filesystem::path makeFolder() {
    char name[] = "/tmp/ondrel-bus-XXXXXX";
    return mkdtemp(name);
  }

  const std::filesystem::path folder_ = makeFolder();
  glib::Ref<GSubprocess> daemon_;
  std::string address_;
};

} // namespace ondrel::support
