// Message boxes: what was shown, what was answered, what will be answered.
#pragma once

#include "host/shell/core/BoxRecord.h"
#include "platform/velshell/VelDialog.h"
#include "platform/velshell/VelPlayerView.h"

#include <deque>
#include <memory>
#include <optional>
#include <vector>

namespace shell {

// A box on the screen.
class MessageBoxDialog final : public CVelDialog {
public:
    MessageBoxDialog(GView* parent, WString text, int style, std::size_t recordIndex);
    ~MessageBoxDialog() override;
    // A notice has a look of its own, where the skin gives it one.
    [[nodiscard]] const WCHAR* GetResourceName() const override;
    const GMessageMap* GetMessageMap() const override;
    int OnInitDialog() override;

    GView* const parent;
    const WString text;
    const int style;
    const std::size_t record;

    static const GMessageMap messageMap;
};

class Boxes {
public:
    Boxes();
    ~Boxes();

    // Shows a box and waits for its answer: 1 OK, anything else not.
    int Ask(GView* parent, const WCHAR* resource, WORD textId, const WCHAR* text, int style);
    // Shows a box that nobody waits for; an earlier one of this kind makes place.
    void Post(GView* parent, const WCHAR* resource, WORD textId, const WCHAR* text, int style);
    // Closes the box in front. False when there is none.
    bool Force(int result);
    // The box in front that is still open, or null.
    [[nodiscard]] MessageBoxDialog* Front() const;
    // Deletes the posted box once it was closed; `all` closes it first.
    void Sweep(bool all = false);
    // Gives a box the next scripted answer that fits; false when there is none.
    bool AnswerByScript(MessageBoxDialog& box);

    struct Answer {
        std::optional<WORD> textId; // none: any box
        int result;
    };
    std::deque<Answer> answers;
    std::vector<BoxRecord> records;

private:
    [[nodiscard]] std::size_t Record(const WCHAR* resource, WORD textId, int style, bool isPosted);

    std::vector<MessageBoxDialog*> asked; // last: in front
    std::unique_ptr<MessageBoxDialog> posted;
};

} // namespace shell
