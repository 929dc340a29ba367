// The tuner library of the receiver chip: what the viewer may ask of the built-in DMB tuner.
//
// One header, several implementations: host/medmb is the software tuner; tests bring a scripted one. The
// classes hold nothing but an opaque pointer, so an implementation is chosen by linking (or loading) a
// library, not by configuring. Every call returns non-zero on success and is made from one thread only, the
// owner of the object.
#pragma once

#include <cstddef>
#include <cstdint>

#ifndef DMB_MEDMB_API
#if defined(_WIN32)
#ifdef DMB_MEDMB_BUILD
#define DMB_MEDMB_API __declspec(dllexport)
#else
#define DMB_MEDMB_API __declspec(dllimport)
#endif
#else
#define DMB_MEDMB_API __attribute__((visibility("default")))
#endif
#endif

// Service types of the library, in _tag_DMB_SERVICE_INFO and as the second argument of SetChannel.
inline constexpr std::int32_t DMB_SERVICE_TYPE_DAB_AUDIO = 0;
inline constexpr std::int32_t DMB_SERVICE_TYPE_DMB_VIDEO = 8;

inline constexpr int DMB_MAX_SERVICES = 18;
inline constexpr int DMB_LABEL_BYTES = 16;

// One service of a block.
struct _tag_DMB_SERVICE_INFO {
    // Narrow text in the device's ANSI code page, padded with zeros or blanks; all 16 bytes may be
    // significant.
    char szLabel[DMB_LABEL_BYTES];
    std::uint32_t reserved0;
    // DMB_SERVICE_TYPE_*; any other value is a service that the viewer cannot show.
    std::int32_t nServiceType;
    // Handed back to SetChannel.
    std::uint32_t nServiceID;
    std::uint32_t reserved1;
};

// What one block carries. The first entry with an empty label ends the list.
struct _tag_DMB_CHANNEL_INFO {
    // Hz.
    std::uint32_t nFrequency;
    _tag_DMB_SERVICE_INFO service[DMB_MAX_SERVICES];
};

static_assert(sizeof(_tag_DMB_SERVICE_INFO) == 32);
static_assert(offsetof(_tag_DMB_SERVICE_INFO, szLabel) == 0);
static_assert(offsetof(_tag_DMB_SERVICE_INFO, reserved0) == 16);
static_assert(offsetof(_tag_DMB_SERVICE_INFO, nServiceType) == 20);
static_assert(offsetof(_tag_DMB_SERVICE_INFO, nServiceID) == 24);
static_assert(offsetof(_tag_DMB_SERVICE_INFO, reserved1) == 28);
static_assert(sizeof(_tag_DMB_CHANNEL_INFO) == 580);
static_assert(offsetof(_tag_DMB_CHANNEL_INFO, nFrequency) == 0);
static_assert(offsetof(_tag_DMB_CHANNEL_INFO, service) == 4);

// Received signal strength; the viewer only displays both figures.
struct _tag_DMB_RSSI_PARAM {
    float fRSSI;
    std::int32_t nValue;
};

static_assert(sizeof(_tag_DMB_RSSI_PARAM) == 8);
static_assert(offsetof(_tag_DMB_RSSI_PARAM, fRSSI) == 0);
static_assert(offsetof(_tag_DMB_RSSI_PARAM, nValue) == 4);

// The tuner: finds the services of a block, tunes one of them, reads the signal.
class DMB_MEDMB_API CDMBLiveControl {
public:
    CDMBLiveControl();
    ~CDMBLiveControl();
    CDMBLiveControl(const CDMBLiveControl&) = delete;
    CDMBLiveControl& operator=(const CDMBLiveControl&) = delete;

    // Non-zero when the device answers; the other calls need an open control.
    int Open();
    int Close();

    // Tunes to a frequency (Hz), waits for the block's service information and fills the record.
    // 0 when the block was not received; what the record holds then is of no meaning.
    int GetChannel(int nFrequency, _tag_DMB_CHANNEL_INFO* pInfo);

    // Tunes to a frequency (Hz) and starts the one service; its data then reach the live stream. nReserved is
    // 0.
    int SetChannel(int nFrequency, int nServiceType, int nServiceID, int nReserved);

    int GetRSSI(_tag_DMB_RSSI_PARAM* pParam);

    // Signal-to-noise ratio in dB.
    int GetSNR(float* pSNR);

private:
    struct Impl;
    Impl* m_pImpl;
};

// The stream of the tuned service, on its way from the tuner to the filters.
class DMB_MEDMB_API CDMBLiveStream {
public:
    CDMBLiveStream();
    ~CDMBLiveStream();
    CDMBLiveStream(const CDMBLiveStream&) = delete;
    CDMBLiveStream& operator=(const CDMBLiveStream&) = delete;

    // Ends the stream: the filters see its end, and no thread of the tuner is left running for it.
    int Close();

private:
    struct Impl;
    Impl* m_pImpl;
};
