// The view object: birth, identity, settings.
#include "view/DMBView.h"

#include <cstring>

#include "graph/DMBFilterControl.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBViewIds.h"

const GRuntimeClass CVelDMBView::classCVelDMBView = {"CVelDMBView", &CVelDMBView::CreateObject,
                                                     &CVelPlayerView::classCVelPlayerView};

GObject* CVelDMBView::CreateObject() {
    return new CVelDMBView;
}

const GRuntimeClass* CVelDMBView::GetRuntimeClass() const {
    return &classCVelDMBView;
}

CVelDMBView::CVelDMBView() = default;

CVelDMBView::~CVelDMBView() {
    delete m_pFilterControl;
}

const WCHAR* CVelDMBView::GetAlias() const {
    return WTEXT("디지털방송");
}

const WCHAR* CVelDMBView::GetResourceName() const {
    return WTEXT("VelDMB");
}

void CVelDMBView::Paint(HDC dc) {
    OnDraw(dc);
}

// ---- Settings ----------------------------------------------------------------------------------------------------------

void CVelDMBView::StoreSetting(LONG& setting, unsigned value, unsigned maximum) {
    const auto stored = static_cast<LONG>(value > maximum ? maximum : value);
    if (WriteSetting(setting, stored) != stored)
        WriteSetting(m_bProfileDirty, 1);
}

unsigned CVelDMBView::GetPIPOnOff() const {
    return 1; // on purpose, whatever was set
}

void CVelDMBView::SetPIPOnOff(unsigned value) {
    StoreSetting(m_uPIPOnOff, value, 1);
}

unsigned CVelDMBView::GetDLSOnOff() const {
    return static_cast<unsigned>(ReadSetting(m_uDLSOnOff));
}

void CVelDMBView::SetDLSOnOff(unsigned value) {
    StoreSetting(m_uDLSOnOff, value, 1);
}

unsigned CVelDMBView::GetPIPSize() const {
    return static_cast<unsigned>(ReadSetting(m_uPIPSize));
}

void CVelDMBView::SetPIPSize(unsigned value) {
    StoreSetting(m_uPIPSize, value, 1);
}

unsigned CVelDMBView::GetPIPPos() const {
    return static_cast<unsigned>(ReadSetting(m_uPIPPos));
}

void CVelDMBView::SetPIPPos(unsigned value) {
    StoreSetting(m_uPIPPos, value, 3);
}

unsigned CVelDMBView::GetDLSPos() const {
    return static_cast<unsigned>(ReadSetting(m_uDLSPos));
}

void CVelDMBView::SetDLSPos(unsigned value) {
    StoreSetting(m_uDLSPos, value, 1);
}

unsigned CVelDMBView::GetRecordTime() const {
    return static_cast<unsigned>(ReadSetting(m_uRecordTime));
}

void CVelDMBView::SetRecordTime(unsigned value) {
    StoreSetting(m_uRecordTime, value, 4);
}

unsigned CVelDMBView::GetRatioOnOff() const {
    return static_cast<unsigned>(ReadSetting(m_uRatioOnOff));
}

void CVelDMBView::SetRatioOnOff(unsigned value) {
    const auto stored = static_cast<LONG>(value);
    if (WriteSetting(m_uRatioOnOff, stored) == stored)
        return;
    WriteSetting(m_bProfileDirty, 1);
    const int mode = GetPlayMode();
    const int type = GetCurrentType();
    if ((mode == kPlayModePlaying || mode == kPlayModeRecording) && (type == kSessionDMB || type == kSessionFile))
        SetPreserveAspectRatio(static_cast<int>(value));
}

int CVelDMBView::IsDebugMode() const {
    return GetDocument()->IsDMBDebugMode();
}

BYTE* CVelDMBView::GetScanFrequency() {
    return m_ScanFrequency;
}

void CVelDMBView::SetScanFrequency(const BYTE* bytes) {
    std::memmove(m_ScanFrequency, bytes, sizeof m_ScanFrequency);
}

unsigned CVelDMBView::GetSNRDebug() const {
    return static_cast<unsigned>(m_uSNRDebug);
}

void CVelDMBView::SetSNRDebug(unsigned value) {
    m_uSNRDebug = static_cast<LONG>(value);
    GButton* antenna = Find(kElementAntenna);
    if (antenna == nullptr)
        return;
    const int redraw = IsToolVisibled();
    if (value != 0) {
        antenna->SetState(kButtonPressed, redraw);
        ShowControls(1, 1);
        EnableToggle(0);
        return;
    }
    antenna->SetText(nullptr, 0);
    antenna->SetState(kButtonNormal, redraw);
    if (GButton* text = Find(kElementDebugText)) {
        text->SetText(nullptr, 0);
        text->Show(0, redraw);
    }
    if (GetCurrentType() != kSessionDAB && GetPlayMode() == kPlayModePlaying && m_bNoSignal == 0)
        EnableToggle(1);
}
