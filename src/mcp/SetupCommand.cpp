#include "mcp/SetupCommand.h"

#include "mcp/ClaudeConfig.h"

#include <fmt/format.h>

namespace ondrel::mcp {

// No single quote may be in the script: the shell takes everything between two of them as it stands. The text
// is complete before anything is written, and the file is replaced in one step.
std::string setupCommand(std::int64_t port) {
  return fmt::format("python3 -c '"
                     "import json,os,shutil,tempfile;"
                     R"(p=os.path.realpath(os.path.expanduser("~/.claude.json"));)"
                     "e=os.path.exists(p);"
                     R"(d=json.load(open(p,encoding="utf-8")) if e else {{}};)"
                     "d=d if isinstance(d,dict) else {{}};"
                     R"(s=d.setdefault("mcpServers",{{}});)"
                     "s=s if isinstance(s,dict) else {{}};"
                     R"(d["mcpServers"]=s;)"
                     R"(s["ondrel"]={{"type":"http","url":"{}"}};)"
                     "t=json.dumps(d,indent=2,sort_keys=True,ensure_ascii=False,allow_nan=False).encode();"
                     "f,n=tempfile.mkstemp(dir=os.path.dirname(p));"
                     R"(w=open(f,"wb");)"
                     "w.write(t);w.flush();os.fsync(f);w.close();"
                     "e and shutil.copymode(p,n);"
                     "os.replace(n,p);"
                     R"(print("Done"))"
                     "'",
                     serverURL(port));
}

} // namespace ondrel::mcp
