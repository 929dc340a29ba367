// What the user named as the source of the broadcast, and the port through which the tuner opens it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/medmb/FrameSource.h"

namespace medmb {

enum class SourceKind : std::uint8_t { None, File, Directory, StandardInput, NamedPipe, Tcp, Command };

struct SourceSpec {
    SourceKind kind = SourceKind::None;
    std::string path; // file, directory, named pipe
    std::string host; // TCP
    std::string port;
    std::string command; // template
    std::string gain;    // for {gain}
    // Command: the text in front of the signal-to-noise ratio in what the program writes to its error output.
    std::string snrMarker;
    bool loop = false; // files start over at their end
};

// `-`, a directory, a file, a named pipe, tcp://HOST:PORT or HOST:PORT. Nothing and a sentence in `error` when it is none of these.
[[nodiscard]] std::optional<SourceSpec> ParseSource(const std::string& text, std::string& error);
// A command template, or the name of a ready-made entry. {snr:TEXT} anywhere in it tells that the program writes its
// signal-to-noise ratio in dB behind TEXT to its error output; it is no argument.
[[nodiscard]] SourceSpec CommandSource(const std::string& command, const std::string& gain = {});

// A demodulator that we know how to start.
struct CommandEntry {
    const char* name;
    const char* command;
    const char* note;
};
[[nodiscard]] std::span<const CommandEntry> ReadyMadeCommands();

// The arguments of a command template for one frequency: {hz} {khz} {mhz} {block} {row} {gain}. Blanks separate, quotes
// and backslash protect; no shell is involved. Empty when a quote is not closed or nothing is there.
[[nodiscard]] std::vector<std::string> ExpandCommand(const std::string& command, int hz, const std::string& gain);

enum class Purpose : std::uint8_t {
    Scan, // only to look: nothing is supervised or begun again
    Play,
};

class SourceProvider {
public:
    virtual ~SourceProvider() = default;
    // The frames of one frequency. Null when there is no source for it, at once and without waiting; `reason` tells why.
    [[nodiscard]] virtual std::unique_ptr<FrameSource> Open(int hz, Purpose purpose, Cancellation& cancellation,
                                                            std::string& reason) = 0;
};

[[nodiscard]] std::unique_ptr<SourceProvider> MakeSourceProvider(SourceSpec spec);

// The files behind a file or directory source, by row; a file whose name tells no block stands on row 0.
struct SourceFile {
    int row = 0;
    std::string path;
};
[[nodiscard]] std::vector<SourceFile> ListSourceFiles(const SourceSpec& spec);

} // namespace medmb
