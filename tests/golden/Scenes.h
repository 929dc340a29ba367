// Every state of the screen that a user can meet, each a short story that ends with a picture.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/shell/skin/SkinDescription.h"
#include "tests/golden/Picture.h"
#include "tests/stories/Story.h"

namespace golden {

// A story with a broadcast that looks like one: Korean labels, a moving picture that stands still, labels and a slide.
class ScreenStory : public stories::Story {
public:
    // Positions in the list.
    enum Channels : LONG { kCity, kNight, kSea, kRiver };

    void TestBody() override {}
    void SpeakIn(shell::Language language) { device.shell.SetLanguage(language); }

    // With the usual channels, on one of them; without, with no list at all.
    void Start(std::optional<WORD> channel);
    void StartEmpty();
    // A list so long that it scrolls.
    void StartWithManyChannels();
    void WatchTelevision();
    void HearRadio();
    // So many reports of lost signal as the view waits for.
    void LoseSignal();
    void PutRecordings();
    void HideControls();
    void GiveReason(shell::ReasonShown reason);
    // The view was closed by its own command.
    void Forsake() { view = nullptr; }

    // The picture as it is now, with as many pixels as the shell draws.
    [[nodiscard]] Picture Look();
    void Take();
    // The same inside the next modal window, after `before` was done in it.
    void TakeInside(std::function<void()> before = {});

    [[nodiscard]] const std::optional<Picture>& Taken() const { return taken; }

    using Story::Close;
    using Story::Command;
    using Story::device;
    using Story::Idle;
    using Story::Label;
    using Story::peer;
    using Story::Report;
    using Story::Tune;
    using Story::view;
    using Story::Wait;

private:
    void PresentPicture();

    std::optional<Picture> taken;
};

struct Scene {
    const char* name;
    void (*play)(ScreenStory& story);
};
[[nodiscard]] const std::vector<Scene>& Scenes();

} // namespace golden
