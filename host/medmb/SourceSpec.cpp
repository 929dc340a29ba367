#include "host/medmb/SourceSpec.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "host/medmb/BlockTable.h"
#include "host/medmb/Inputs.h"

namespace medmb {

namespace {

constexpr std::array<CommandEntry, 3> kCommands = {{
    {"dab2eti", "dab2eti {hz}", "RTL-SDR, automatic gain; layer II radio and television"},
    {"dab2eti-gain", "dab2eti {hz} {gain}", "the same with a fixed gain in tenths of a decibel"},
    {"eti-cmdline", "eti-cmdline-rtlsdr -S -Q -C {block}",
     "needs a version that knows the Korean block names; hangs on sub-channels above about 341 kbit/s, so no "
     "television"},
}};

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
        return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
    });
}

class CommandFrameSource final : public ByteFrameSource {
public:
    explicit CommandFrameSource(std::unique_ptr<CommandInput> program)
        : ByteFrameSource(std::move(program), false), command(static_cast<CommandInput*>(&Input())) {}

    [[nodiscard]] bool Measured(float& decibel) const override {
        const auto snr = command->MeasuredSnr();
        if (snr)
            decibel = *snr;
        return snr.has_value();
    }

private:
    CommandInput* command;
};

class SpecSourceProvider final : public SourceProvider {
public:
    explicit SpecSourceProvider(SourceSpec given) : spec(std::move(given)) {}

    std::unique_ptr<FrameSource> Open(int hz, Purpose purpose, Cancellation& cancellation,
                                      std::string& reason) override {
        const auto row = RowOfFrequency(hz);
        if (!row) {
            reason = std::to_string(hz) + " Hz is no block of the table";
            return nullptr;
        }
        switch (spec.kind) {
        case SourceKind::File:
        case SourceKind::Directory:
            return OpenFile(*row, purpose, reason);
        case SourceKind::StandardInput:
        case SourceKind::NamedPipe:
            return OnlyRow(*row, reason) ? OpenStream(purpose, cancellation, reason) : nullptr;
        case SourceKind::Tcp:
            return OnlyRow(*row, reason) ? OpenTcp(purpose, cancellation, reason) : nullptr;
        case SourceKind::Command:
            return OpenCommand(hz, purpose, cancellation, reason);
        case SourceKind::None:
            break;
        }
        reason = "no source is set";
        return nullptr;
    }

private:
    // A stream carries one block and tells no name.
    static bool OnlyRow(int row, std::string& reason) {
        if (row != 0)
            reason = "the stream stands on row 0";
        return row == 0;
    }

    std::unique_ptr<FrameSource> OpenFile(int row, Purpose purpose, std::string& reason) const {
        for (const SourceFile& file : ListSourceFiles(spec)) {
            if (file.row != row)
                continue;
            Descriptor descriptor = OpenRegularFile(file.path, reason);
            if (!descriptor.Valid())
                return nullptr;
            const bool loop = spec.loop && purpose == Purpose::Play;
            return std::make_unique<ByteFrameSource>(
                std::make_unique<FileInput>(std::move(descriptor), loop, file.path), true);
        }
        reason = "no file for block " + BlockName(row);
        return nullptr;
    }

    std::unique_ptr<FrameSource> OpenStream(Purpose purpose, Cancellation& cancellation, std::string& reason) {
        struct stat info {};
        const bool isInput = spec.kind == SourceKind::StandardInput;
        if (isInput && fstat(STDIN_FILENO, &info) == 0 && S_ISREG(info.st_mode)) {
            // Redirected from a file: as good as its name.
            Descriptor copy(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
            const bool loop = spec.loop && purpose == Purpose::Play;
            return std::make_unique<ByteFrameSource>(std::make_unique<FileInput>(std::move(copy), loop), true);
        }
        if (!isInput && !pipe.Valid())
            pipe = Descriptor(open(spec.path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        const int descriptor = isInput ? STDIN_FILENO : pipe.Get();
        if (descriptor < 0) {
            reason = spec.path + ": " + std::strerror(errno);
            return nullptr;
        }
        return std::make_unique<ByteFrameSource>(std::make_unique<StreamInput>(descriptor, !isInput, cancellation),
                                                 false);
    }

    std::unique_ptr<FrameSource> OpenTcp(Purpose purpose, Cancellation& cancellation, std::string& reason) const {
        auto input = std::make_unique<TcpInput>(spec.host, spec.port, purpose == Purpose::Play, cancellation);
        if (!input->Connect()) {
            reason = spec.host + ":" + spec.port + ": " + input->Reason();
            return nullptr;
        }
        return std::make_unique<ByteFrameSource>(std::move(input), false);
    }

    std::unique_ptr<FrameSource> OpenCommand(int hz, Purpose purpose, Cancellation& cancellation,
                                             std::string& reason) const {
        auto input = std::make_unique<CommandInput>(ExpandCommand(spec.command, hz, spec.gain), spec.snrMarker,
                                                    purpose == Purpose::Play, cancellation);
        if (!input->Start()) {
            reason = input->Reason();
            return nullptr;
        }
        return std::make_unique<CommandFrameSource>(std::move(input));
    }

    SourceSpec spec;
    Descriptor pipe; // stays open between tunings: closing it would end the writer
};

} // namespace

std::optional<SourceSpec> ParseSource(const std::string& text, std::string& error) {
    SourceSpec spec;
    if (text == "-") {
        spec.kind = SourceKind::StandardInput;
        return spec;
    }
    if (const std::string scheme = "tcp://"; text.starts_with(scheme)) {
        const std::string address = text.substr(scheme.size());
        const std::size_t colon = address.rfind(':');
        if (colon == std::string::npos || colon == 0 || colon + 1 == address.size()) {
            error = text + ": a network source is tcp://HOST:PORT";
            return std::nullopt;
        }
        spec.kind = SourceKind::Tcp;
        spec.host = address.substr(0, colon);
        spec.port = address.substr(colon + 1);
        // [::1] as in every address bar
        if (spec.host.size() > 2 && spec.host.front() == '[' && spec.host.back() == ']')
            spec.host = spec.host.substr(1, spec.host.size() - 2);
        return spec;
    }
    struct stat info {};
    if (stat(text.c_str(), &info) != 0) {
        // HOST:PORT without the scheme, when it can be nothing else.
        const std::size_t colon = text.rfind(':');
        if (colon != std::string::npos && colon > 0 && colon + 1 < text.size() && text.find('/') == std::string::npos &&
            text.find_first_not_of("0123456789", colon + 1) == std::string::npos)
            return ParseSource("tcp://" + text, error);
        error = text + ": " + std::strerror(errno);
        return std::nullopt;
    }
    spec.path = text;
    spec.kind = S_ISDIR(info.st_mode)    ? SourceKind::Directory
                : S_ISFIFO(info.st_mode) ? SourceKind::NamedPipe
                                         : SourceKind::File;
    return spec;
}

SourceSpec CommandSource(const std::string& command, const std::string& gain) {
    SourceSpec spec;
    spec.kind = SourceKind::Command;
    spec.command = command;
    for (const CommandEntry& entry : kCommands)
        if (command == entry.name)
            spec.command = entry.command;
    spec.gain = gain;
    constexpr std::string_view kOpening = "{snr:";
    const std::size_t from = spec.command.find(kOpening);
    const std::size_t to = from == std::string::npos ? from : spec.command.find('}', from);
    if (to != std::string::npos) {
        spec.snrMarker = spec.command.substr(from + kOpening.size(), to - from - kOpening.size());
        spec.command.erase(from, to + 1 - from);
    }
    return spec;
}

std::span<const CommandEntry> ReadyMadeCommands() {
    return kCommands;
}

std::vector<std::string> ExpandCommand(const std::string& command, int hz, const std::string& gain) {
    const auto row = RowOfFrequency(hz);
    const auto value = [&](std::string_view name) -> std::optional<std::string> {
        if (name == "hz")
            return std::to_string(hz);
        if (name == "khz")
            return std::to_string(hz / 1000);
        if (name == "mhz") {
            std::string khz = std::to_string(hz % 1000000 / 1000);
            return std::to_string(hz / 1000000) + "." + std::string(3 - khz.size(), '0') + khz;
        }
        if (name == "block")
            return row ? BlockName(*row) : std::string();
        if (name == "row")
            return row ? std::to_string(*row) : std::string();
        if (name == "gain")
            return gain;
        return std::nullopt;
    };
    std::vector<std::string> arguments;
    std::string current;
    bool inArgument = false;
    char quote = 0;
    for (std::size_t i = 0; i < command.size(); ++i) {
        const char c = command[i];
        if (quote == 0 && (c == ' ' || c == '\t')) {
            if (inArgument)
                arguments.push_back(std::exchange(current, {}));
            inArgument = false;
            continue;
        }
        inArgument = true;
        if (c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == '\'' || c == '"')) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < command.size()) {
            current.push_back(command[++i]);
        } else if (const std::size_t end = c == '{' ? command.find('}', i) : std::string::npos;
                   end != std::string::npos && value(std::string_view(command).substr(i + 1, end - i - 1))) {
            current += *value(std::string_view(command).substr(i + 1, end - i - 1));
            i = end;
        } else {
            current.push_back(c);
        }
    }
    if (inArgument)
        arguments.push_back(current);
    if (quote != 0)
        arguments.clear();
    return arguments;
}

std::unique_ptr<SourceProvider> MakeSourceProvider(SourceSpec spec) {
    return std::make_unique<SpecSourceProvider>(std::move(spec));
}

std::vector<SourceFile> ListSourceFiles(const SourceSpec& spec) {
    namespace fs = std::filesystem;
    std::vector<SourceFile> files;
    if (spec.kind == SourceKind::File) {
        const auto row = RowFromFileName(fs::path(spec.path).stem().string());
        files.push_back({row.value_or(0), spec.path});
        return files;
    }
    std::error_code error;
    std::vector<fs::path> paths;
    for (const auto& entry : fs::directory_iterator(spec.path, error))
        if (EqualIgnoringCase(entry.path().extension().string(), ".eti"))
            paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    // A name that is the block and nothing else goes before one that only mentions it.
    for (const bool whole : {true, false})
        for (const fs::path& path : paths) {
            const std::string stem = path.stem().string();
            const auto row = whole ? RowFromText(stem) : RowFromFileName(stem);
            const bool taken = std::any_of(files.begin(), files.end(),
                                           [&](const SourceFile& file) { return row && file.row == *row; });
            if (row && !taken)
                files.push_back({*row, path.string()});
        }
    std::sort(files.begin(), files.end(), [](const SourceFile& a, const SourceFile& b) { return a.row < b.row; });
    return files;
}

} // namespace medmb
