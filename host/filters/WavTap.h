// Writes what is heard into a WAV file.
#pragma once

#include "host/filters/Outputs.h"

#include <filesystem>
#include <fstream>

namespace filters {

class WavTap final : public SoundTap {
public:
    // Ok tells whether the file could be made. The header is completed at the end.
    explicit WavTap(const std::filesystem::path& path);
    ~WavTap() override;
    [[nodiscard]] bool Ok() const { return static_cast<bool>(file_); }

    void OnSound(std::span<const std::int16_t> frames) override;

private:
    void WriteHeader();

    std::ofstream file_;
    std::uint32_t dataBytes_ = 0;
};

} // namespace filters
