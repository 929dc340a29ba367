#include "host/shell/core/Document.h"

#include "host/ce/Ce.h"
#include "platform/velshell/VelPlayerView.h"

#include <algorithm>

int CVelDocument::IsMinimized() const {
    return m_pImpl->minimized;
}

int CVelDocument::IsDMBDebugMode() const {
    return m_pImpl->debugMode;
}

const WCHAR* CVelDocument::GetProfileDirectory() const {
    return m_pImpl->profileDirectory.c_str();
}

int CVelDocument::IsSaveRequested() const {
    return m_pImpl->saveRequested;
}

void CVelDocument::ClearSaveRequest() {
    m_pImpl->saveRequested = false;
}

int CVelDocument::MakeDirectory(const WCHAR* path) {
    ce::Ce* system = ce::Ce::Current();
    if (!system || !path) {
        return 0;
    }
    return system->files().FolderExists(path) || system->files().MakeFolder(path);
}

int CVelDocument::CheckFileType(const WCHAR* path) const {
    if (!path) {
        return 0;
    }
    const WStringView name(path);
    const auto endsIn = [name](WStringView suffix) {
        const auto lower = [](WCHAR c) { return c >= 'A' && c <= 'Z' ? static_cast<WCHAR>(c + 32) : c; };
        return name.size() > suffix.size() && std::equal(suffix.rbegin(), suffix.rend(), name.rbegin(),
                                                         [&](WCHAR a, WCHAR b) { return a == lower(b); });
    };
    constexpr int kRecordedBroadcast = 4;
    constexpr int kTransportStream = 5;
    return endsIn(u".dmb") ? kRecordedBroadcast : endsIn(u".ts") || endsIn(u".tsp") ? kTransportStream : 0;
}

int IsAccessableSDMMC() {
    ce::Ce* system = ce::Ce::Current();
    return system && system->files().Space(u"\\SDMMC Card\\").has_value();
}

namespace shell {

Document::Document(WString profileDirectory, bool debugMode) {
    m_pImpl = new Impl{std::move(profileDirectory), false, debugMode, false};
}

Document::~Document() {
    delete m_pImpl;
}

} // namespace shell
