// Writes 16-bit samples into a RIFF/WAVE file.
#pragma once

#include <cstdint>
#include <fstream>
#include <span>
#include <string>

namespace dmbprobe {

class WavFile {
public:
    // Creates the file or makes it empty; Ok() tells whether that worked.
    WavFile(const std::string& path, unsigned rate, unsigned channels);

    void Write(std::span<const std::int16_t> interleaved);

    // Completes the sizes in the header. False when any byte could not be written.
    [[nodiscard]] bool Close();

    [[nodiscard]] bool Ok() const { return static_cast<bool>(file); }

private:
    void WriteHeader();

    std::ofstream file;
    unsigned rate;
    unsigned channels;
    std::uint32_t dataBytes = 0;
};

} // namespace dmbprobe
