// dmbprobe bsac: decodes a file of BSAC access units.
#include <cstdint>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/app/dmbprobe/Commands.h"
#include "host/app/dmbprobe/WavFile.h"
#include "host/codec/BsacDecoder.h"

namespace dmbprobe {

namespace {

struct BsacOptions {
    std::string config;
    std::string input;
    std::string output;
};

std::optional<std::vector<std::uint8_t>> ParseHex(const std::string& text) {
    const auto digit = [](char c) -> int {
        if (c >= '0' && c <= '9')
            return c - '0';
        if (c >= 'a' && c <= 'f')
            return c - 'a' + 10;
        if (c >= 'A' && c <= 'F')
            return c - 'A' + 10;
        return -1;
    };
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const int high = digit(text[i]);
        const int low = digit(text[i + 1]);
        if (high < 0 || low < 0)
            return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
    }
    return bytes;
}

// The next access unit behind its 16-bit length; nothing at the end of the file. A unit that the file cuts
// short comes as far as it goes.
std::optional<std::vector<std::uint8_t>> ReadUnit(std::istream& input) {
    const int high = input.get();
    const int low = input.get();
    if (!input)
        return std::nullopt;
    std::vector<std::uint8_t> unit(static_cast<std::size_t>(high << 8 | low));
    input.read(reinterpret_cast<char*>(unit.data()), static_cast<std::streamsize>(unit.size()));
    unit.resize(static_cast<std::size_t>(input.gcount()));
    return unit;
}

int Decode(const BsacOptions& options) {
    const auto configBytes = ParseHex(options.config);
    const auto config = configBytes ? codec::ParseBsacConfig(*configBytes) : std::nullopt;
    if (!config) {
        std::cerr << "dmbprobe bsac: " << options.config << " is no configuration of a BSAC stream\n";
        return kUsage;
    }
    std::ifstream input(options.input, std::ios::binary);
    if (!input || input.peek() == std::ifstream::traits_type::eof()) {
        if (!input.is_open() || input.bad()) {
            std::cerr << "dmbprobe bsac: cannot open " << options.input << '\n';
            return kNoInput;
        }
        input.clear(std::ios::eofbit);
    }
    WavFile output(options.output, config->SampleRate(), config->channels);
    if (!output.Ok()) {
        std::cerr << "dmbprobe bsac: cannot write " << options.output << '\n';
        return kFailed;
    }
    codec::BsacDecoder decoder(*config);
    unsigned units = 0;
    unsigned blocks = 0;
    while (const auto unit = ReadUnit(input)) {
        decoder.Push(*unit);
        while (const auto block = decoder.Next()) {
            if (block->status != codec::BsacStatus::kOk)
                std::cerr << "dmbprobe bsac: unit " << units << ": " << codec::StatusText(block->status) << '\n';
            output.Write(block->samples);
            ++blocks;
        }
        ++units;
    }
    if (!output.Close()) {
        std::cerr << "dmbprobe bsac: cannot write " << options.output << '\n';
        return kFailed;
    }
    std::cerr << "dmbprobe bsac: " << units << " access units, " << blocks << " blocks\n";
    return kDone;
}

} // namespace

void AddBsac(CLI::App& app, int& status) {
    auto options = std::make_shared<BsacOptions>();
    CLI::App* command = app.add_subcommand("bsac", "Decodes BSAC access units into a WAV file");
    command->add_option("--config", options->config, "AudioSpecificConfig as hexadecimal digits")->required();
    command->add_option("IN.bsac", options->input, "Access units, each behind its length as a 16-bit big-endian number")
        ->required();
    command->add_option("OUT.wav", options->output, "16-bit samples, 1024 for each block")->required();
    command->callback([options, &status] { status = Decode(*options); });
}

} // namespace dmbprobe
