#include "tests/tuner/ScriptedTuner.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace scripted {

void TunerScript::AddService(int frequency, const std::string& label, int type, std::uint32_t id) {
    _tag_DMB_CHANNEL_INFO& block = blocks[frequency];
    block.nFrequency = static_cast<std::uint32_t>(frequency);
    for (_tag_DMB_SERVICE_INFO& service : block.service) {
        if (service.szLabel[0] != '\0')
            continue;
        std::memset(service.szLabel, ' ', sizeof service.szLabel);
        std::memcpy(service.szLabel, label.data(), std::min(label.size(), sizeof service.szLabel));
        service.nServiceType = type;
        service.nServiceID = id;
        return;
    }
}

TunerScript& Tuner() {
    static TunerScript script;
    return script;
}

void ResetTuner() {
    Tuner() = TunerScript{};
}

void Log(const std::string& line) {
    Tuner().log.push_back(line);
    if (Tuner().listener)
        Tuner().listener(line);
}

} // namespace scripted

using scripted::Log;
using scripted::Tuner;

struct CDMBLiveControl::Impl {
    bool open = false;
};

CDMBLiveControl::CDMBLiveControl() : m_pImpl(new Impl) {
    ++Tuner().controlsAlive;
}

CDMBLiveControl::~CDMBLiveControl() {
    --Tuner().controlsAlive;
    delete m_pImpl;
}

int CDMBLiveControl::Open() {
    Log("tuner.Open");
    m_pImpl->open = Tuner().opens;
    return m_pImpl->open ? 1 : 0;
}

int CDMBLiveControl::Close() {
    Log("tuner.Close");
    m_pImpl->open = false;
    return 1;
}

int CDMBLiveControl::GetChannel(int nFrequency, _tag_DMB_CHANNEL_INFO* pInfo) {
    Log("tuner.GetChannel " + std::to_string(nFrequency));
    if (Tuner().onGetChannel)
        Tuner().onGetChannel(nFrequency);
    const auto block = Tuner().blocks.find(nFrequency);
    if (!m_pImpl->open || block == Tuner().blocks.end())
        return 0;
    *pInfo = block->second;
    return 1;
}

int CDMBLiveControl::SetChannel(int nFrequency, int nServiceType, int nServiceID, int nReserved) {
    char line[80];
    std::snprintf(line, sizeof line, "tuner.SetChannel %d %d %X %d", nFrequency, nServiceType,
                  static_cast<unsigned>(nServiceID), nReserved);
    Log(line);
    return m_pImpl->open && (!Tuner().tunes || Tuner().tunes(nFrequency, nServiceType, nServiceID)) ? 1 : 0;
}

int CDMBLiveControl::GetRSSI(_tag_DMB_RSSI_PARAM* pParam) {
    Log("tuner.GetRSSI");
    *pParam = Tuner().rssi;
    return 1;
}

int CDMBLiveControl::GetSNR(float* pSNR) {
    Log("tuner.GetSNR");
    *pSNR = Tuner().snr;
    return 1;
}

struct CDMBLiveStream::Impl {};

CDMBLiveStream::CDMBLiveStream() : m_pImpl(nullptr) {
    ++Tuner().streamsAlive;
}

CDMBLiveStream::~CDMBLiveStream() {
    --Tuner().streamsAlive;
    delete m_pImpl;
}

int CDMBLiveStream::Close() {
    Log("stream.Close");
    return 1;
}
