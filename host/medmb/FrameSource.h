// Where ETI frames come from: the port between the tuner and files, pipes, networks and demodulators.
#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>

#include "host/medmb/Cancellation.h"
#include "host/medmb/EtiFramer.h"
#include "host/wire/EtiFrame.h"

namespace medmb {

enum class ReadStatus : std::uint8_t {
    Data,
    Waiting, // nothing within the limit, later perhaps; files tell it at once
    End,     // nothing will come any more
    Failed,  // cannot be read; Reason tells why
    Cancelled,
};

// Bytes from somewhere, in whatever portions they come.
class ByteInput {
public:
    virtual ~ByteInput() = default;
    // Reads at least one byte on Data; waits at most `limit`.
    [[nodiscard]] virtual ReadStatus Read(std::span<std::uint8_t> room, std::size_t& count, Millis limit) = 0;
    // The next byte does not follow the last one: a file starts over, a connection was made anew. Asking forgets.
    [[nodiscard]] virtual bool TakeRestart() { return false; }
    [[nodiscard]] virtual std::string Reason() const { return {}; }
};

class FrameSource {
public:
    virtual ~FrameSource() = default;

    // On Data the next frame is at Frame(), valid until the next call. Waits at most `limit`; Waiting also tells that bytes came and
    // no frame was in them.
    [[nodiscard]] virtual ReadStatus Next(Millis limit) = 0;
    [[nodiscard]] virtual const wire::EtiFrame& Frame() const = 0;
    // The frame does not follow the one before.
    [[nodiscard]] virtual bool Restarted() const = 0;
    // Frames are there as fast as they are asked for; time is then counted in frames.
    [[nodiscard]] virtual bool IsFile() const = 0;
    // Signal-to-noise ratio from the receiver's own mouth, when it has one.
    [[nodiscard]] virtual bool Measured(float& /*decibel*/) const { return false; }
    [[nodiscard]] virtual std::string Reason() const = 0;
    [[nodiscard]] virtual EtiFramer::Counters Count() const = 0;
};

// Frames found in a stream of bytes.
class ByteFrameSource : public FrameSource {
public:
    ByteFrameSource(std::unique_ptr<ByteInput> bytes, bool isFile) : input(std::move(bytes)), file(isFile) {}

    [[nodiscard]] ReadStatus Next(Millis limit) override;
    [[nodiscard]] const wire::EtiFrame& Frame() const override { return *frame; }
    [[nodiscard]] bool Restarted() const override { return restarted; }
    [[nodiscard]] bool IsFile() const override { return file; }
    [[nodiscard]] std::string Reason() const override { return input->Reason(); }
    [[nodiscard]] EtiFramer::Counters Count() const override { return framer.Count(); }

protected:
    [[nodiscard]] ByteInput& Input() { return *input; }

private:
    std::unique_ptr<ByteInput> input;
    bool file;
    EtiFramer framer;
    std::optional<wire::EtiFrame> frame;
    bool restarted = false;
    bool restartPending = false;
    bool anyInTurn = false; // a frame since the file began
    bool any = false;       // a frame in an earlier turn
    bool ended = false;
    wire::ByteVector chunk;
    wire::ByteVector held; // read after a restart, while frames from before it are still being handed out
};

} // namespace medmb
