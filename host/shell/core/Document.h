// The shell's one document: the flags and folders that views ask for.
#pragma once

#include "platform/velshell/VelDocument.h"

struct CVelDocument::Impl {
    WString profileDirectory; // ends in a path separator
    bool minimized = false;
    bool debugMode = false;
    bool saveRequested = false;
};

namespace shell {

class Document final : public CVelDocument {
public:
    Document(WString profileDirectory, bool debugMode);
    ~Document();

    void SetMinimized(bool minimized) { m_pImpl->minimized = minimized; }
    void SetDebugMode(bool on) { m_pImpl->debugMode = on; }
    void RequestSave() { m_pImpl->saveRequested = true; }
};

} // namespace shell
