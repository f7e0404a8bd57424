#include "dbaccess/drivers/postgresql/ConnectGuarded.h"

#include "dbaccess/CAException.h"

#include <fcntl.h>
#include <libpq-fe.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <utility>

namespace dbaccess::postgresql {

namespace {

/// A descriptor that is closed in the end.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int file) : m_file(file) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() { Reset(-1); }

    void Reset(int file)
    {
        if (m_file >= 0) {
            ::close(m_file);
        }
        m_file = file;
    }
    [[nodiscard]] int Get() const { return m_file; }

private:
    int m_file = -1;
};

/// What a server sends before it has accepted a connection, held back until it is known to be harmless.
class Inspector {
public:
    /// Takes bytes of the server. @return those that may be passed on. @throws CAException for a request for the
    /// password.
    std::string Pass(std::string_view bytes)
    {
        m_held += bytes;
        std::string passed;
        while (!m_isEncrypted && PassOne(passed)) {
        }
        if (m_isEncrypted) {
            passed += std::exchange(m_held, {});
        }
        return passed;
    }

private:
    static constexpr std::size_t kHeader = 5; // a letter and a length
    static constexpr std::size_t kRequest = 9;

    [[nodiscard]] std::uint32_t NumberAt(std::size_t place) const
    {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            number = number << 8U | static_cast<unsigned char>(m_held[place + i]);
        }
        return number;
    }

    /// Passes on one answer, message or part of one. @return whether there may be another.
    bool PassOne(std::string& passed)
    {
        constexpr std::uint32_t kAsksForPassword = 3; // as it is
        if (m_rest > 0) {
            const std::size_t count = std::min(m_rest, m_held.size());
            passed.append(m_held, 0, count);
            m_held.erase(0, count);
            m_rest -= count;
            return m_rest == 0;
        }
        if (m_held.empty()) {
            return false;
        }
        // An answer of one letter to the question whether to encrypt: no message can come in its place.
        const char letter = m_held.front();
        if (!m_isSpeaking && (letter == 'S' || letter == 'G')) {
            m_isEncrypted = true;
            return false;
        }
        if (!m_isSpeaking && letter == 'N') {
            passed += letter;
            m_held.erase(0, 1);
            return true;
        }
        m_isSpeaking = true;
        if (m_held.size() < (letter == 'R' ? kRequest : kHeader)) {
            return false;
        }
        if (letter == 'R' && NumberAt(kHeader) == kAsksForPassword) {
            throw CAException(
                "postgresql: the server asks for the password in clear text, and the connection is not encrypted; add "
                "sslmode=require to the URL, or cleartext-password=on to send it all the same");
        }
        m_rest = std::size_t{1} + NumberAt(1);
        return true;
    }

    std::string m_held;
    std::size_t m_rest = 0;    ///< bytes of the present message that are still to be passed on
    bool m_isSpeaking = false; ///< the answers about encryption are over
    bool m_isEncrypted = false;
};

/// A connection that is being made.
class Attempt {
public:
    Attempt(const char* const* names, const char* const* values, std::chrono::seconds limit)
        : m_db(PQconnectStartParams(names, values, 0)), m_limit(limit)
    {
        if (m_db == nullptr) {
            throw std::bad_alloc();
        }
    }

    [[nodiscard]] bool IsTimedOut() const { return m_isTimedOut; }

    Handle Complete()
    {
        PostgresPollingStatusType wanted = PGRES_POLLING_WRITING;
        while (PQstatus(m_db.get()) != CONNECTION_BAD) {
            if (!Wait(wanted)) {
                m_isTimedOut = true;
                break;
            }
            wanted = PQconnectPoll(m_db.get());
            if (wanted == PGRES_POLLING_OK) {
                GiveBack();
                break;
            }
            if (wanted == PGRES_POLLING_FAILED) {
                break;
            }
            ForgetClosed();
            if (wanted == PGRES_POLLING_READING && m_server.Get() < 0) {
                PutBetween();
            }
        }
        return std::move(m_db);
    }

private:
    /// Whether the library's socket is still the one that it was given.
    [[nodiscard]] bool IsBetween() const
    {
        struct stat status{};
        return m_server.Get() >= 0 && ::fstat(PQsocket(m_db.get()), &status) == 0 && status.st_ino == m_inode;
    }

    /// The library closes its socket when it goes on to another address.
    void ForgetClosed()
    {
        if (m_server.Get() >= 0 && !IsBetween()) {
            m_server.Reset(-1);
            m_library.Reset(-1);
        }
    }

    void PutBetween()
    {
        const int own = PQsocket(m_db.get());
        std::array<int, 2> pair{};
        struct stat status{};
        m_server.Reset(::fcntl(own, F_DUPFD_CLOEXEC, 0));
        if (m_server.Get() < 0 ||
            ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, pair.data()) != 0) {
            throw std::bad_alloc();
        }
        m_library.Reset(pair[1]);
        const Descriptor ours(pair[0]);
        ::dup3(ours.Get(), own, O_CLOEXEC);
        ::fstat(own, &status);
        m_inode = status.st_ino;
        m_inspector = Inspector();
    }

    void GiveBack()
    {
        if (IsBetween()) {
            ::dup3(m_server.Get(), PQsocket(m_db.get()), O_CLOEXEC);
        }
    }

    /// Waits until the library can go on. @return false when the server takes too long.
    bool Wait(PostgresPollingStatusType wanted)
    {
        if (m_server.Get() >= 0) {
            return wanted != PGRES_POLLING_READING || Carry();
        }
        pollfd own = {PQsocket(m_db.get()), static_cast<short>(wanted == PGRES_POLLING_READING ? POLLIN : POLLOUT), 0};
        return Poll(&own, 1);
    }

    bool Poll(pollfd* files, nfds_t count) const
    {
        const int milliseconds = m_limit.count() > 0 ? static_cast<int>(m_limit.count()) * 1000 : -1;
        int ready = 0;
        do {
            ready = ::poll(files, count, milliseconds);
        } while (ready < 0 && errno == EINTR);
        return ready > 0;
    }

    /// Carries bytes both ways until there are some for the library.
    bool Carry()
    {
        while (!HasUnread()) {
            std::array<pollfd, 2> files = {{{m_library.Get(), POLLIN, 0}, {m_server.Get(), POLLIN, 0}}};
            if (!Poll(files.data(), files.size())) {
                return false;
            }
            std::array<char, 8192> buffer{};
            if (files[0].revents != 0) {
                const ssize_t count = ::recv(m_library.Get(), buffer.data(), buffer.size(), 0);
                Send(m_server.Get(), {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))});
            }
            if (files[1].revents != 0) {
                const ssize_t count = ::recv(m_server.Get(), buffer.data(), buffer.size(), 0);
                if (count <= 0) {
                    ::shutdown(m_library.Get(), SHUT_WR);
                    return true;
                }
                const std::string passed = m_inspector.Pass({buffer.data(), static_cast<std::size_t>(count)});
                if (!passed.empty()) {
                    Send(m_library.Get(), passed);
                }
            }
        }
        return true;
    }

    /// Whether the library has bytes to read.
    [[nodiscard]] bool HasUnread() const
    {
        pollfd own = {PQsocket(m_db.get()), POLLIN, 0};
        return ::poll(&own, 1, 0) > 0;
    }

    /// A connection that takes no more ends by its answer, or by its silence.
    void Send(int file, std::string_view bytes) const
    {
        while (!bytes.empty()) {
            const ssize_t count = ::send(file, bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (count > 0) {
                bytes.remove_prefix(static_cast<std::size_t>(count));
                continue;
            }
            pollfd room = {file, POLLOUT, 0};
            if (count == 0 || (errno != EAGAIN && errno != EINTR) || !Poll(&room, 1)) {
                return;
            }
        }
    }

    Handle m_db;
    std::chrono::seconds m_limit;
    Descriptor m_server;  ///< the library's own socket, while another has its place
    Descriptor m_library; ///< our end of the pair
    ino_t m_inode = 0;
    bool m_isTimedOut = false;
    Inspector m_inspector;
};

} // namespace

Handle ConnectGuarded(const char* const* names, const char* const* values, std::chrono::seconds limit)
{
    Attempt attempt(names, values, limit);
    Handle db = attempt.Complete();
    if (attempt.IsTimedOut()) {
        throw ConnectTimeout(CString("connection to server at \"") + PQhost(db.get()) + "\", port " + PQport(db.get()) +
                             " failed: timeout expired\n");
    }
    return db;
}

} // namespace dbaccess::postgresql
