#include "console/Commands.h"
#include "console/FileBuffer.h"
#include "console/TerminalBuffer.h"
#include "platform/CodePage.h"

#include <poll.h>
#include <unistd.h>

#include <csignal>
#include <iostream>

namespace {

bool OutIsClosed()
{
    pollfd out = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&out, 1, 0) == 1 && (out.revents & POLLERR) != 0;
}

} // namespace

int main(int argc, char* argv[])
{
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
    return console::RunProgram(argc, argv, terminal);
}
