#include "host/app/dmbprobe/WavFile.h"

#include <string_view>
#include <vector>

namespace dmbprobe {

namespace {

void AppendLittleEndian(std::string& bytes, std::uint32_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

} // namespace

WavFile::WavFile(const std::string& path, unsigned sampleRate, unsigned channelCount)
    : file(path, std::ios::binary | std::ios::trunc), rate(sampleRate), channels(channelCount) {
    WriteHeader();
}

void WavFile::WriteHeader() {
    constexpr unsigned kSampleBytes = 2;
    std::string bytes = "RIFF";
    AppendLittleEndian(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    AppendLittleEndian(bytes, 16, 4);
    AppendLittleEndian(bytes, 1, 2); // linear PCM
    AppendLittleEndian(bytes, channels, 2);
    AppendLittleEndian(bytes, rate, 4);
    AppendLittleEndian(bytes, rate * channels * kSampleBytes, 4);
    AppendLittleEndian(bytes, channels * kSampleBytes, 2);
    AppendLittleEndian(bytes, 8 * kSampleBytes, 2);
    bytes += "data";
    AppendLittleEndian(bytes, dataBytes, 4);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

void WavFile::Write(std::span<const std::int16_t> interleaved) {
    std::string bytes;
    bytes.reserve(interleaved.size() * 2);
    for (const std::int16_t sample : interleaved)
        AppendLittleEndian(bytes, static_cast<std::uint16_t>(sample), 2);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    dataBytes += static_cast<std::uint32_t>(bytes.size());
}

bool WavFile::Close() {
    file.seekp(0);
    WriteHeader();
    file.close();
    return Ok();
}

} // namespace dmbprobe
