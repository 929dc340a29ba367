// The wish to leave, from wherever it comes: the window's thread, a signal's. It reaches the session while there is one, and before
// that whatever its making takes long for.
#pragma once

#include <mutex>
#include <stop_token>

namespace dmbtv {

class Session;

class QuitPort {
public:
    // From any thread.
    void Request();
    // Asked to stop when somebody has asked to leave.
    [[nodiscard]] std::stop_token Token() const { return source.get_token(); }

    // A session that hears of it as long as this object lives.
    class Joined {
    public:
        Joined(QuitPort& quitPort, Session& session) : port(quitPort) { port.Join(&session); }
        ~Joined() { port.Join(nullptr); }
        Joined(const Joined&) = delete;
        Joined& operator=(const Joined&) = delete;

    private:
        QuitPort& port;
    };

private:
    void Join(Session* joined);

    std::stop_source source;
    std::mutex mutex; // guards what follows
    Session* session = nullptr;
};

} // namespace dmbtv
