#include "host/filters/WavTap.h"

#include <array>

namespace filters {

namespace {

constexpr std::size_t kHeaderBytes = 44;

void Put(std::array<std::uint8_t, kHeaderBytes>& out, std::size_t at, std::uint32_t value, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i)
        out[at + i] = static_cast<std::uint8_t>(value >> (8 * i) & 0xFF);
}

} // namespace

WavTap::WavTap(const std::filesystem::path& path) : file_(path, std::ios::binary | std::ios::trunc) {
    WriteHeader();
}

WavTap::~WavTap() {
    file_.seekp(0);
    WriteHeader();
}

void WavTap::OnSound(std::span<const std::int16_t> frames) {
    // Samples of a WAV file begin with their low byte, whatever this machine does.
    std::vector<std::uint8_t> bytes;
    bytes.reserve(frames.size() * 2);
    for (const std::int16_t sample : frames) {
        bytes.push_back(static_cast<std::uint8_t>(sample & 0xFF));
        bytes.push_back(static_cast<std::uint8_t>(static_cast<std::uint16_t>(sample) >> 8));
    }
    file_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    dataBytes_ += static_cast<std::uint32_t>(bytes.size());
}

void WavTap::WriteHeader() {
    constexpr std::uint32_t kFrameBytes = 2 * kDeviceChannels;
    std::array<std::uint8_t, kHeaderBytes> header = {'R', 'I', 'F', 'F', 0,   0,  0, 0, 'W', 'A', 'V',
                                                     'E', 'f', 'm', 't', ' ', 16, 0, 0, 0,   1};
    Put(header, 4, dataBytes_ + kHeaderBytes - 8, 4);
    Put(header, 22, kDeviceChannels, 2);
    Put(header, 24, kDeviceRate, 4);
    Put(header, 28, kDeviceRate * kFrameBytes, 4);
    Put(header, 32, kFrameBytes, 2);
    Put(header, 34, 16, 2);
    header[36] = 'd', header[37] = 'a', header[38] = 't', header[39] = 'a';
    Put(header, 40, dataBytes_, 4);
    file_.write(reinterpret_cast<const char*>(header.data()), kHeaderBytes);
}

} // namespace filters
