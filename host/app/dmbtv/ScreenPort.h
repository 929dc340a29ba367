// Joins the filters' picture port to the shell's video plane.
#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "host/filters/Outputs.h"
#include "host/shell/Shell.h"

namespace dmbtv {

class ScreenPort final : public filters::VideoPort {
public:
    // The shell comes after the filters' registration and goes before them: null until then and after.
    void Join(shell::Shell* shell);

    void Show(const std::shared_ptr<const filters::Picture>& picture) override;
    void Clear() override;
    // The shell's plane follows the view's window by itself.
    void Place(const RECT& rectangle, bool visible) override;

private:
    std::mutex mutex; // guards what follows
    shell::Shell* joined = nullptr;
    std::vector<std::uint32_t> pixels;
};

// The picture as 0x00RRGGBB, by ITU-R BT.601 with studio range.
void ToRgb(const filters::Picture& picture, std::vector<std::uint32_t>& pixels);

} // namespace dmbtv
