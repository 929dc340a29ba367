// The shell's one document: folders, flags and file services that views ask for.
#pragma once

#include "platform/types.h"

// Kinds of files that CheckFileType tells apart.
enum enSupportedFileType : int {
    kFileTypeOther = 0,
    kFileTypeDMB = 4, // a recorded broadcast: .dmb
    kFileTypeTS = 5,  // a transport stream: .ts, .tsp
};

class DMB_HOST_API CVelDocument {
public:
    // The view is shown as a small window over another view.
    [[nodiscard]] int IsMinimized() const;
    // The shell runs with its DMB debug mode on.
    [[nodiscard]] int IsDMBDebugMode() const;
    // Device folder of the settings files; ends in a path separator.
    [[nodiscard]] const WCHAR* GetProfileDirectory() const;

    // The shell asks every view to save its settings at the next SaveProfile, changed or not.
    [[nodiscard]] int IsSaveRequested() const;
    void ClearSaveRequest();

    // Creates a folder (its parent must exist). Non-zero when the folder exists afterwards.
    int MakeDirectory(const WCHAR* path);
    // The kind of a file by the ending of its name, an enSupportedFileType.
    [[nodiscard]] int CheckFileType(const WCHAR* path) const;

    CVelDocument(const CVelDocument&) = delete;
    CVelDocument& operator=(const CVelDocument&) = delete;
    struct Impl;

protected:
    CVelDocument() = default;
    ~CVelDocument() = default;
    Impl* m_pImpl = nullptr;
};
