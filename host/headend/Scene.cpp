#include "host/headend/Scene.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include <cairo.h>

#include "host/headend/Melody.h"

namespace headend {

namespace {

constexpr double kTickerSpeed = 42; // pixels a second
constexpr double kTickerGap = 60;

} // namespace

std::vector<std::string> SceneNames() {
    return BackdropNames();
}

bool IsScene(const std::string& name) {
    const auto names = SceneNames();
    return std::find(names.begin(), names.end(), name) != names.end();
}

Scene::Scene(const SceneSettings& sceneSettings)
    : settings(sceneSettings), backdrop(MakeBackdrop(sceneSettings.kind, sceneSettings.width, sceneSettings.height)) {
    Canvas scratch(8, 8);
    tickerWidth = scratch.Text(0, 0, settings.ticker, {.size = settings.height / 17.0}).width + kTickerGap;
}

Scene::~Scene() = default;

void Scene::Draw(Canvas& canvas, double seconds) {
    backdrop->Draw(canvas, seconds);
    const double w = settings.width;
    const double h = settings.height;
    const double unit = h / 240;

    // Name and clock.
    const TextStyle name{.size = 15 * unit, .bold = true, .width = 190 * unit, .shadow = true};
    const TextStyle clock{.size = 15 * unit, .bold = true, .align = 1, .shadow = true};
    canvas.Text(12 * unit, 9 * unit, settings.station, name);
    const int now = (settings.clockStart + static_cast<int>(seconds)) % 86400;
    char text[16];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", now / 3600, now / 60 % 60, now % 60);
    canvas.Text(w - 12 * unit, 9 * unit, text, clock);

    // The ticker.
    if (!settings.ticker.empty()) {
        const double top = h - 25 * unit;
        canvas.Rectangle(0, top, w, 20 * unit, Colour::Rgb(0x05070F, 0.62));
        canvas.Rectangle(0, top, w, 1.2 * unit, Colour::Rgb(0xFFFFFF, 0.35));
        cairo_save(canvas.Cairo());
        cairo_rectangle(canvas.Cairo(), 0, top, w, 20 * unit);
        cairo_clip(canvas.Cairo());
        for (double x = 40 * unit - std::fmod(seconds * kTickerSpeed * unit, tickerWidth); x < w; x += tickerWidth)
            canvas.Text(x, top + 2.2 * unit, settings.ticker, {.size = h / 17.0});
        cairo_restore(canvas.Cairo());
    }

    // The sync mark: a lamp under the clock that lights while the beep sounds.
    if (settings.flashEvery > 0) {
        const double x = w - 20 * unit;
        const double y = 40 * unit;
        canvas.Ring(x, y, 7.5 * unit, 1.6 * unit, Colour::Rgb(0xFFFFFF, 0.8));
        if (std::fmod(seconds, settings.flashEvery) < kBeepSeconds - 1e-9) {
            canvas.Glow(x, y, 26 * unit, Colour::Rgb(0xFFFFFF, 0.8));
            canvas.Disc(x, y, 6 * unit, Colour::Rgb(0xFFFFFF));
        } else {
            canvas.Disc(x, y, 5 * unit, Colour::Rgb(0x05070F, 0.55));
        }
    }
}

} // namespace headend
