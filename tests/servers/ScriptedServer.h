#pragma once

#include <string>
#include <thread>
#include <vector>

/// A server on a port of this machine that says what a test has written down, whatever it is told, and notes what it is
/// told.
class ScriptedServer {
public:
    /// @param greeting  sent to each client that connects. @param answers  one for each message of a client, in order;
    ///                  without one the server stays silent.
    explicit ScriptedServer(std::string greeting = {}, std::vector<std::string> answers = {});
    ScriptedServer(const ScriptedServer&) = delete;
    ScriptedServer& operator=(const ScriptedServer&) = delete;
    ~ScriptedServer();

    [[nodiscard]] const std::string& Port() const { return m_port; }
    /// Ends the server. @return all that clients have sent.
    const std::string& Received();

private:
    void Serve();
    void ServeClient(int client);
    [[nodiscard]] bool WaitFor(int socket) const;

    std::string m_greeting;
    std::vector<std::string> m_answers;
    std::string m_received;
    std::string m_port;
    int m_listener;
    int m_stop; // readable when it is time to end
    std::jthread m_thread;
};
