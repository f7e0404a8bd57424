#include "console/CommandLog.h"

#include "console/Actor.h"
#include "console/OutputFile.h"
#include "management/JsonWriter.h"
#include "management/Text.h"

#include <fcntl.h>
#include <fmt/chrono.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sstream>
#include <utility>

namespace console {

CommandLog::CommandLog(std::string file)
    : m_name(std::move(file)), m_file(::open(m_name.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kForItsOwner))
{
    if (m_file < 0) {
        ThrowUnwritable("nothing was done");
    }
}

CommandLog::~CommandLog() { ::close(m_file); }

void CommandLog::Write(std::string_view command, Exit exit, bool changed)
{
    std::ostringstream text;
    JsonWriter json(text, JsonWriter::Layout::line);
    json.BeginObject();
    json.WriteMember("time", TextValue(fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", fmt::gmtime(std::time(nullptr)))));
    json.WriteMember("who", TextValue(ActorName()));
    json.WriteMember("command", TextValue(std::string(command)));
    json.WriteMember("exit", static_cast<std::int64_t>(exit));
    json.WriteMember("changed", changed);
    json.End();
    text << '\n';
    const std::string line = text.str();
    const ssize_t written = ::write(m_file, line.data(), line.size());
    if (written != static_cast<ssize_t>(line.size())) {
        errno = written < 0 ? errno : ENOSPC;
        ThrowUnwritable("what the command changed stays changed");
    }
}

void CommandLog::ThrowUnwritable(std::string_view what) const
{
    throw Error(ErrorCode::failed,
                FillPattern("cannot write the log {}: {}; {}", Visible(m_name), std::strerror(errno), what));
}

} // namespace console
