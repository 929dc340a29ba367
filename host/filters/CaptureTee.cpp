#include "host/filters/CaptureTee.h"

#include "host/ce/Error.h"
#include "host/filters/AvcUnits.h"
#include "host/wire/Pes.h"
#include "host/wire/SlPacket.h"

#include <algorithm>
#include <utility>

namespace filters {

namespace {

// Some five seconds: longer than random access points are apart. Then the file begins anyhow.
constexpr std::size_t kLongestWait = 2000;

constexpr HRESULT FromError(DWORD error) {
    return error == ERROR_SUCCESS ? E_FAIL : static_cast<HRESULT>(0x80070000u | (error & 0xFFFF));
}

} // namespace

Bytes PacketsOfSection(const TableSection& section, std::uint8_t lastCounter) {
    Bytes payload = {0}; // the pointer field: the section begins at once
    payload.insert(payload.end(), section.bytes.begin(), section.bytes.end());
    const std::size_t perPacket = wire::kTsPacketSize - 4;
    const std::size_t count = (payload.size() + perPacket - 1) / perPacket;
    payload.resize(count * perPacket, 0xFF);
    Bytes packets(count * wire::kTsPacketSize);
    for (std::size_t i = 0; i < count; ++i) {
        wire::TsHeader header;
        header.payloadUnitStart = i == 0;
        header.pid = section.pid;
        header.continuity = static_cast<std::uint8_t>((lastCounter + 16 - (count - 1 - i) % 16) & 0x0F);
        const auto out = std::span(packets).subspan(i * wire::kTsPacketSize).first<wire::kTsPacketSize>();
        wire::WriteTsPacket(out, header, ByteSpan(payload).subspan(i * perPacket, perPacket));
    }
    return packets;
}

bool BeginsRandomAccess(const wire::TsPacket& packet, const ProgramStream<VideoFormat>& video) {
    if (!packet.header.payloadUnitStart || packet.header.scrambling != 0)
        return false;
    if (packet.header.randomAccess)
        return true;
    const auto pes = wire::PesHeader::Parse(packet.payload);
    if (!pes)
        return false;
    ByteSpan data = packet.payload.subspan(pes->size);
    if (video.sl) {
        const auto header = wire::SlHeader::Parse(data, *video.sl);
        if (!header || !header->accessUnitStart)
            return false;
        if (header->randomAccess)
            return true;
        data = data.subspan(header->size);
    }
    // The unit's beginning in the byte stream format, or one that begins with a length.
    const AvcUnitInfo info = InspectAvcUnit(data);
    if (info.randomAccess || info.hasParameterSets)
        return true;
    const auto avc = AvcConfiguration::Parse(video.format.configuration);
    if (!avc || data.size() <= avc->lengthBytes)
        return false;
    Bytes first = {0, 0, 1};
    first.insert(first.end(), data.begin() + avc->lengthBytes, data.end());
    return InspectAvcUnit(first).randomAccess;
}

CaptureTee::CaptureTee(ce::Clock& clock, std::function<void(HRESULT)> failed)
    : clock_(clock), failed_(std::move(failed)), wake_(clock) {}

CaptureTee::~CaptureTee() {
    (void)Stop();
}

HRESULT CaptureTee::SetFileName(const WCHAR* path) {
    if (path == nullptr)
        return E_POINTER;
    const std::scoped_lock lock(guard_);
    path_ = path;
    return path_.empty() ? E_INVALIDARG : S_OK;
}

HRESULT CaptureTee::Start() {
    const std::scoped_lock lock(guard_);
    if (path_.empty() || writer_.joinable())
        return E_UNEXPECTED;
    file_ = CreateFileW(path_.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                        nullptr);
    if (file_ == INVALID_HANDLE_VALUE)
        return E_FAIL;
    queue_.clear();
    closing_ = false;
    result_ = S_OK;
    restart_ = true;
    lost_ = 0;
    writer_ = clock_.StartWorker([this] { Write(); });
    capturing_ = true;
    return S_OK;
}

HRESULT CaptureTee::Stop() {
    capturing_ = false;
    if (!writer_.joinable())
        return S_FALSE;
    {
        const std::scoped_lock lock(guard_);
        closing_ = true;
    }
    wake_.Raise();
    writer_.join();
    const std::scoped_lock lock(guard_);
    return result_;
}

// --- the streaming thread

void CaptureTee::Offer(ByteSpan bytes, const ProgramTables& tables) {
    const auto packet = wire::TsPacket::Parse(bytes);
    if (!packet || packet->header.transportError)
        return;
    // Followed all the time, so that tables of our own fit in front of the stream's.
    if (packet->hasPayload)
        counters_[packet->header.pid] = packet->header.continuity;
    if (!capturing_)
        return;
    {
        const std::scoped_lock lock(guard_);
        if (std::exchange(restart_, false)) {
            begun_ = false;
            waited_ = 0;
        }
    }
    if (!begun_) {
        if (!Begins(*packet, tables))
            return;
        begun_ = true;
        WriteTables(tables);
    }
    Enqueue(bytes);
}

bool CaptureTee::Begins(const wire::TsPacket& packet, const ProgramTables& tables) {
    if (++waited_ > kLongestWait)
        return true;
    const auto& program = tables.Current();
    if (!program)
        return false;
    if (!program->video)
        return true;
    return packet.header.pid == program->video->pid && BeginsRandomAccess(packet, *program->video);
}

void CaptureTee::WriteTables(const ProgramTables& tables) {
    const std::vector<TableSection> sections = tables.Sections();
    // The last packet of each PID gets the counter of the stream's last packet of it: the next one continues.
    std::map<std::uint16_t, unsigned> packetsLeft;
    for (const TableSection& section : sections)
        packetsLeft[section.pid] += static_cast<unsigned>(PacketsOfSection(section, 0).size() / wire::kTsPacketSize);
    for (const TableSection& section : sections) {
        const auto count = static_cast<unsigned>(PacketsOfSection(section, 0).size() / wire::kTsPacketSize);
        packetsLeft[section.pid] -= count;
        const unsigned last = counters_[section.pid] + 256 - packetsLeft[section.pid];
        Enqueue(PacketsOfSection(section, last & 0x0F));
    }
}

void CaptureTee::Enqueue(ByteSpan bytes) {
    {
        const std::scoped_lock lock(guard_);
        if (queue_.size() + bytes.size() > kQueueBytes) {
            lost_ += bytes.size() / wire::kTsPacketSize;
            return;
        }
        queue_.insert(queue_.end(), bytes.begin(), bytes.end());
    }
    wake_.Raise();
}

// --- the writer

void CaptureTee::Write() {
    for (;;) {
        Bytes bytes;
        bool last = false;
        {
            const std::scoped_lock lock(guard_);
            bytes.swap(queue_);
            last = closing_;
        }
        DWORD done = 0;
        if (!bytes.empty() && SUCCEEDED(result_) &&
            (WriteFile(file_, bytes.data(), static_cast<DWORD>(bytes.size()), &done, nullptr) == FALSE ||
             done != bytes.size()))
            Fail(ce::LastError());
        if (last && bytes.empty())
            break;
        if (bytes.empty())
            (void)wake_.Wait();
    }
    const std::scoped_lock lock(guard_);
    if (CloseHandle(file_) == FALSE && SUCCEEDED(result_))
        result_ = E_FAIL;
    file_ = INVALID_HANDLE_VALUE;
}

void CaptureTee::Fail(DWORD error) {
    capturing_ = false;
    HRESULT reason = FromError(error);
    {
        const std::scoped_lock lock(guard_);
        result_ = reason;
    }
    if (failed_)
        failed_(reason);
}

} // namespace filters
