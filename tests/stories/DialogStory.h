// What stories about dialogs share.
#pragma once

#include <functional>
#include <string>

#include "tests/stories/Story.h"

namespace stories {

class DialogStory : public Story {
protected:
    void SetUp() override { Open(); }
    // Does something while the dialog is open.
    void Then(std::function<void()> action) { device.shell.DuringModal(std::move(action)); }
    [[nodiscard]] WString Text(UINT id) const { return device.shell.Element(id)->GetText(); }
    bool Press(UINT id) {
        const bool pressed = device.shell.Press(id);
        return pressed;
    }
};

} // namespace stories
