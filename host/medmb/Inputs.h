// The kinds of byte input: files, descriptors (standard input, named pipes), TCP connections, programs.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/medmb/FrameSource.h"

namespace medmb {

// Closes what it holds.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : value(number) {}
    Descriptor(Descriptor&& other) noexcept : value(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept;
    ~Descriptor() { Close(); }

    [[nodiscard]] int Get() const { return value; }
    [[nodiscard]] bool Valid() const { return value >= 0; }
    int Release();
    void Close();

private:
    int value = -1;
};

// Invalid, with a reason, for what is no regular file; never waits for anybody.
[[nodiscard]] Descriptor OpenRegularFile(const std::string& path, std::string& reason);

// A regular file from its beginning; starts over at the end when asked. A looping file that had something in it and is empty now is
// waited for: under its path, if there is one, because what replaces it may be another file.
class FileInput final : public ByteInput {
public:
    FileInput(Descriptor file, bool loopAtEnd, std::string pathOfFile = {})
        : descriptor(std::move(file)), loop(loopAtEnd), path(std::move(pathOfFile)) {}
    [[nodiscard]] ReadStatus Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) override;
    [[nodiscard]] bool TakeRestart() override { return std::exchange(restarted, false); }
    [[nodiscard]] std::string Reason() const override { return reason; }

private:
    void LookAgain();

    Descriptor descriptor;
    bool loop;
    std::string path;
    std::int64_t offset = 0;
    bool anyData = false;
    bool restarted = false;
    std::string reason;
};

// A descriptor that delivers when it likes. It is borrowed: standard input and named pipes outlive one tuning. With `follow`
// a writer that goes away is waited for again.
class StreamInput final : public ByteInput {
public:
    StreamInput(int borrowed, bool followWriters, Cancellation& cancel)
        : descriptor(borrowed), follow(followWriters), cancellation(cancel) {}
    [[nodiscard]] ReadStatus Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) override;
    [[nodiscard]] bool TakeRestart() override { return std::exchange(restarted, false); }
    [[nodiscard]] std::string Reason() const override { return reason; }

private:
    int descriptor;
    bool follow;
    Cancellation& cancellation;
    bool anyData = false;
    bool writerGone = false;
    bool restarted = false;
    std::string reason;
};

// Grows from half a second to eight: how long to wait before something that failed is tried again.
class BackOff {
public:
    [[nodiscard]] Millis Next();
    void Reset() { wait = kFirst; }

private:
    static constexpr Millis kFirst = 500;
    static constexpr Millis kLongest = 8000;
    Millis wait = kFirst;
};

class TcpInput final : public ByteInput {
public:
    // With `reconnect` a lost connection is made again, with back-off.
    TcpInput(std::string hostName, std::string portName, bool makeAgain, Cancellation& cancel)
        : host(std::move(hostName)), port(std::move(portName)), reconnect(makeAgain), cancellation(cancel) {}
    // False at once when nobody answers, after a second of silence, or when cancelled.
    [[nodiscard]] bool Connect();
    [[nodiscard]] ReadStatus Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) override;
    [[nodiscard]] bool TakeRestart() override { return std::exchange(restarted, false); }
    [[nodiscard]] std::string Reason() const override { return reason; }

private:
    std::string host;
    std::string port;
    bool reconnect;
    Cancellation& cancellation;
    Descriptor socket;
    BackOff backOff;
    Millis retryAt = 0;
    bool restarted = false;
    std::string reason;
};

// A child in its own process group, its standard output and error piped to us.
class ChildProcess {
public:
    ChildProcess() = default;
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() { Stop(); }

    [[nodiscard]] bool Start(const std::vector<std::string>& arguments, std::string& reason);
    // Asks the whole group to end, insists after 60 ms, and collects the child; takes 100 ms at most. What even then has not ended (a
    // process that waits for its hardware cannot) is collected later.
    void Stop();
    [[nodiscard]] bool Running() const { return pid > 0; }
    [[nodiscard]] int Output() const { return output.Get(); }
    [[nodiscard]] int Errors() const { return errors.Get(); }
    // How the child ended, once its output has ended; in words.
    [[nodiscard]] std::string CollectExit();

private:
    int pid = -1;
    Descriptor output;
    Descriptor errors;
};

// The output of a demodulator. It is watched: a program that says nothing for five seconds is taken for hung and begun
// again, as is one that ends; with back-off as long as it brings nothing.
class CommandInput final : public ByteInput {
public:
    CommandInput(std::vector<std::string> argumentList, std::string marker, bool supervised, Cancellation& cancel)
        : arguments(std::move(argumentList)), snrMarker(std::move(marker)), supervise(supervised),
          cancellation(cancel) {}
    [[nodiscard]] bool Start();
    [[nodiscard]] ReadStatus Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) override;
    [[nodiscard]] bool TakeRestart() override { return std::exchange(restarted, false); }
    [[nodiscard]] std::string Reason() const override { return reason; }
    // The figure behind the marker in the last line that had one.
    [[nodiscard]] std::optional<float> MeasuredSnr() const { return snr; }

    static constexpr Millis kSilenceLimit = 5000;

private:
    [[nodiscard]] ReadStatus Fail(const std::string& why);
    void ReadErrors();
    void TakeErrorLine(const std::string& line);

    std::vector<std::string> arguments;
    std::string snrMarker;
    bool supervise;
    Cancellation& cancellation;
    ChildProcess child;
    BackOff backOff;
    Millis lastData = 0;
    Millis retryAt = 0;
    bool restarted = false;
    std::string reason;
    std::string errorLine;
    std::string lastErrorLine;
    std::optional<float> snr;
};

} // namespace medmb
