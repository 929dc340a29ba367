// The view's settings file.
#include <memory>
#include <new>

#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/ProfileRecord.h"

namespace {

WString ProfilePath(const CVelDocument& document) {
    return WString(document.GetProfileDirectory()) + kProfileFileName;
}

// The record in the file, or nothing when the file is missing, empty, unreadable or inconsistent.
std::optional<ProfileRecord> ReadProfile(const WString& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return std::nullopt;
    std::optional<ProfileRecord> record;
    DWORD high = 0;
    const DWORD length = GetFileSize(file, &high);
    // The first word has 16 bits and must equal the length, so a longer file is inconsistent whatever it holds.
    if (length > 0 && length <= 0xFFFF && high == 0) {
        const std::unique_ptr<BYTE[]> buffer(new (std::nothrow) BYTE[length]);
        DWORD done = 0;
        if (buffer != nullptr && ReadFile(file, buffer.get(), length, &done, nullptr) && done == length)
            record = DecodeProfile({buffer.get(), length});
    }
    CloseHandle(file);
    return record;
}

} // namespace

void CVelDMBView::LoadProfile() {
    WriteSetting(m_bProfileDirty, 0);
    const std::optional<ProfileRecord> record = ReadProfile(ProfilePath(*GetDocument()));
    if (!record) {
        ResetProfile();
        return;
    }
    m_nCurChannel = record->currentChannel;
    WriteSetting(m_uRecordTime, record->recordTime);
    m_rcPIP = record->pipRect;
    WriteSetting(m_uRatioOnOff, record->ratioOnOff);
}

void CVelDMBView::SaveProfile() {
    CVelDocument& document = *GetDocument();
    if (document.IsSaveRequested())
        WriteSetting(m_bProfileDirty, 1);
    if (ReadSetting(m_bProfileDirty) == 0) {
        document.ClearSaveRequest();
        return;
    }
    const HANDLE file = CreateFileW(ProfilePath(document).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        document.ClearSaveRequest(); // still dirty: the next save tries again
        return;
    }
    const ProfileRecord record{m_nCurChannel, ReadSetting(m_uRecordTime), m_rcPIP, ReadSetting(m_uRatioOnOff)};
    DWORD done = 0;
    // The length word goes last, so that a file cut short in between is never taken for a good one.
    const auto unfinished = EncodeProfile(record, 0);
    WriteFile(file, unfinished.data(), kProfileBytes, &done, nullptr);
    SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    const auto finished = EncodeProfile(record, kProfileBytes);
    WriteFile(file, finished.data(), sizeof(WORD), &done, nullptr);
    WriteSetting(m_bProfileDirty, 0);
    CloseHandle(file);
    document.ClearSaveRequest();
}

void CVelDMBView::ResetProfile() {
    m_nCurChannel = -1;
    WriteSetting(m_uRecordTime, 0);
    WriteSetting(m_uRatioOnOff, 0);
    ResetPIPosition();
}

// `text` has room for one byte more than `length`.
void CVelDMBView::TrimEndSpace(char* text, int length) {
    while (length > 0 && (text[length - 1] == ' ' || text[length - 1] == '\0'))
        --length;
    text[length] = '\0';
}
