#include "console/Commands.h"
#include "console/FileBuffer.h"
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
    console::Terminal terminal{in,          std::cout, std::cerr, isatty(STDIN_FILENO) != 0, isatty(STDERR_FILENO) != 0,
                               &OutIsClosed};
    return console::RunProgram(argc, argv, terminal);
}
