// The MEDMBLIB classes on top of the current tuner.
#include "host/medmb/Tuner.h"
#include "platform/medmblib.h"

struct CDMBLiveControl::Impl {
    bool open = false;

    [[nodiscard]] medmb::Tuner* Tuner() const { return open ? medmb::Tuner::Current() : nullptr; }
};

CDMBLiveControl::CDMBLiveControl() : m_pImpl(new Impl) {}

CDMBLiveControl::~CDMBLiveControl() {
    Close();
    delete m_pImpl;
}

int CDMBLiveControl::Open() {
    m_pImpl->open = medmb::Tuner::Current() != nullptr;
    return m_pImpl->open ? 1 : 0;
}

int CDMBLiveControl::Close() {
    if (medmb::Tuner* tuner = m_pImpl->Tuner())
        tuner->StopService();
    m_pImpl->open = false;
    return 1;
}

int CDMBLiveControl::GetChannel(int nFrequency, _tag_DMB_CHANNEL_INFO* pInfo) {
    medmb::Tuner* tuner = m_pImpl->Tuner();
    return tuner != nullptr && pInfo != nullptr && tuner->GetChannel(nFrequency, *pInfo) ? 1 : 0;
}

int CDMBLiveControl::SetChannel(int nFrequency, int nServiceType, int nServiceID, int /*nReserved*/) {
    medmb::Tuner* tuner = m_pImpl->Tuner();
    return tuner != nullptr && tuner->SetChannel(nFrequency, nServiceType, static_cast<std::uint32_t>(nServiceID)) ? 1
                                                                                                                   : 0;
}

int CDMBLiveControl::GetRSSI(_tag_DMB_RSSI_PARAM* pParam) {
    const medmb::Tuner* tuner = m_pImpl->Tuner();
    if (tuner == nullptr || pParam == nullptr)
        return 0;
    pParam->fRSSI = tuner->Strength();
    pParam->nValue = tuner->FibErrorPerMille();
    return 1;
}

int CDMBLiveControl::GetSNR(float* pSNR) {
    const medmb::Tuner* tuner = m_pImpl->Tuner();
    if (tuner == nullptr || pSNR == nullptr)
        return 0;
    *pSNR = tuner->SignalToNoise();
    return 1;
}

// The stream is the tuner's: this object is only the handle by which it is ended.
struct CDMBLiveStream::Impl {};

CDMBLiveStream::CDMBLiveStream() : m_pImpl(nullptr) {}

CDMBLiveStream::~CDMBLiveStream() {
    delete m_pImpl;
}

int CDMBLiveStream::Close() {
    medmb::Tuner* tuner = medmb::Tuner::Current();
    if (tuner == nullptr)
        return 0;
    tuner->StopService();
    return 1;
}
