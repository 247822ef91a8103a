#include "integrations/StyleScript.h"

namespace ondrel::integrations {

std::string styleScript(std::string_view styles) {
  std::string escaped;
  for (const char c : styles) {
    if (c == '\\' || c == '`')
      escaped += '\\';
    escaped += c;
  }
  return R"((function(){
    var el = document.getElementById('ondrel-css');
    if (el) el.remove();
    var s = document.createElement('style');
    s.id = 'ondrel-css';
    s.textContent = `)" +
         escaped + R"(`;
    document.head.appendChild(s);
})();)";
}

} // namespace ondrel::integrations
