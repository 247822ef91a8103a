#include "base/Log.h"

namespace ondrel::base {

namespace {
LogSink installedSink = nullptr;
}

void setLogSink(LogSink sink) {
  installedSink = sink;
}

void Logger::write(LogLevel level, const std::string& message) const {
  if (installedSink)
    installedSink(level, category_, message);
}

} // namespace ondrel::base
