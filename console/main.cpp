#include "console/Commands.h"
#include "console/FileBuffer.h"
#include "console/TerminalBuffer.h"
#include "platform/CodePage.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <new>
#include <string_view>

namespace {

bool OutIsClosed()
{
    pollfd out = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

/// As the terminal says or, where it does not, the environment; 0 where neither does.
std::size_t TerminalWidth()
{
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
    const char* columns = std::getenv("COLUMNS");
    return columns == nullptr ? 0 : std::strtoul(columns, nullptr, 10);
}

/// Keeps what is opened later, such as the connection to a server, from becoming the standard output of a program that
/// was started without one. Writing to such an output, and reading from such an input, fails as before.
void OccupyClosedStreams()
{
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) == -1) {
            open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
        }
    }
}

/// Streams may need memory, which there is none of.
void WriteError(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(STDERR_FILENO, text.data(), text.size());
        if (count <= 0) {
            return;
        }
        text.remove_prefix(static_cast<std::size_t>(count));
    }
}

int RanOutOfMemory(std::string_view sentence)
{
    WriteError("qvadmin: ");
    WriteError(sentence);
    WriteError("\n");
    return static_cast<int>(console::Exit::failed);
}

int Run(int argc, char* argv[])
{
    OccupyClosedStreams();
    SetAnsiCodePage(CP_UTF8);
    // Writing too much, or where nobody reads, is to fail like any other write, with a sentence.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::ios::sync_with_stdio(false);
    console::FileBuffer input(STDIN_FILENO);
    std::istream in(&input);
    const bool outIsTerminal = isatty(STDOUT_FILENO) != 0;
    const bool errIsTerminal = isatty(STDERR_FILENO) != 0;
    console::TerminalBuffer shownOut(*std::cout.rdbuf(), "\n\t");
    console::TerminalBuffer shownErr(*std::cerr.rdbuf(), "\n\t\r");
    std::ostream out(outIsTerminal ? &shownOut : std::cout.rdbuf());
    std::ostream err(errIsTerminal ? &shownErr : std::cerr.rdbuf());
    err << std::unitbuf;
    console::Terminal terminal{in, out, err, isatty(STDIN_FILENO) != 0, errIsTerminal, &OutIsClosed};
    terminal.outIsTerminal = outIsTerminal;
    terminal.width = outIsTerminal ? TerminalWidth() : 0;
    try {
        return console::RunProgram(argc, argv, terminal);
    } catch (const std::bad_alloc&) {
        return RanOutOfMemory(console::OutOfMemorySentence(terminal));
    }
}

} // namespace

int main(int argc, char* argv[])
{
    try {
        return Run(argc, argv);
    } catch (const std::bad_alloc&) {
        return RanOutOfMemory("out of memory");
    }
}
