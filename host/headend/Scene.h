// What the television stations show: a moving picture with the station's name, a clock, a ticker and the sync flash.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/headend/Backdrop.h"
#include "host/headend/Canvas.h"

namespace headend {

struct SceneSettings {
    std::string kind = "city"; // a name of SceneNames()
    int width = 320;
    int height = 240;
    std::string station;   // UTF-8
    std::string ticker;    // UTF-8, runs along the bottom
    int clockStart = 0;    // seconds of the day at time 0
    double flashEvery = 0; // seconds; 0 = no flash. The first flash is at 0.
};

[[nodiscard]] std::vector<std::string> SceneNames();
[[nodiscard]] bool IsScene(const std::string& name);

class Scene {
public:
    explicit Scene(const SceneSettings& settings);
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    // The picture at that many seconds, the same every time. The canvas has the settings' size.
    void Draw(Canvas& canvas, double seconds);

private:
    SceneSettings settings;
    std::unique_ptr<Backdrop> backdrop;
    double tickerWidth = 0;
};

} // namespace headend
