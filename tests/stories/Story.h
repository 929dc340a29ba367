// A story: the real module in the real headless shell, over the scripted tuner and the scripted filters, under a manual clock.
//
// A story touches what a user, the receiver or the shell touches, and looks at the log of effects: posted messages, tuner and
// filter calls, titles, boxes, play modes.
#pragma once

#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/velshell/VelDocument.h"
#include "tests/graph/ScriptedFilters.h"
#include "tests/harness/DMBViewPeer.h"
#include "tests/harness/DeviceFixture.h"
#include "view/DMBViewIds.h"

namespace stories {

// Positions in the usual list: three television and two radio services.
enum Usual : LONG { kNews = 0, kMusic = 1, kSport = 2, kJazz = 3, kMovie = 4 };
[[nodiscard]] std::vector<ChannelRecord> UsualChannels();

class Story : public ::testing::Test {
protected:
    explicit Story(const std::filesystem::path& skin = harness::ProductSkin());
    ~Story() override;
    void TearDown() override;

    // Makes the list file and, with a channel, the settings file; opens the view and handles what that starts.
    void Open(const std::vector<ChannelRecord>& channels = UsualChannels(), std::optional<WORD> savedChannel = {});
    // Closes the view and checks that nothing is left over.
    void Close();

    // A graph that failed half-way leaks, by rule, the filters made before the failure: closes the view, expects exactly these
    // to be left, and lets go of them.
    void CloseLeaking(std::initializer_list<scripted::Kind> kinds);

    // The list's request to play a position; handled at once.
    void Tune(LONG index);
    void Command(UINT id);
    void Send(UINT message, WPARAM wParam = 0, LPARAM lParam = 0);
    // A filter reports an event; handled at once.
    void Report(scripted::Kind kind, LONG code);
    // A label arrives from the radio source.
    void Label(const std::string& bytes, std::uint32_t charset = 0);
    // The radio service is on air: its first good frames were announced.
    void OnAir();
    void Wait(int milliseconds) { device.shell.Wait(milliseconds); }
    void Idle() { device.shell.RunUntilIdle(); }

    [[nodiscard]] bool HasTimer(UINT_PTR id) { return device.ce.loop().HasTimer(view->GetSafeHwnd(), id); }
    // Lines of the log that contain the text.
    [[nodiscard]] int Count(const std::string& part) const;
    [[nodiscard]] bool Saw(const std::string& part) const { return Count(part) > 0; }
    // The texts occur in this order, each after the one before.
    [[nodiscard]] ::testing::AssertionResult InOrder(std::initializer_list<std::string> parts) const;
    void Forget() { device.shell.ClearLog(); }

    [[nodiscard]] GButton& Element(UINT id) const;
    // 0 the normal, 1 the alternative face; no view can ask for it.
    [[nodiscard]] int FaceOf(UINT id) const;
    [[nodiscard]] WString Info() const; // empty when the element is hidden
    [[nodiscard]] WString TextOf(WORD id) const { return view->GetMessageW(id); }

    harness::Device device;
    scripted::Stage stage;
    std::unique_ptr<PadInfo> pad;
    CVelDMBView* view = nullptr;
    std::unique_ptr<DMBViewPeer> peer;

private:
    int leaked = 0;
};

} // namespace stories
