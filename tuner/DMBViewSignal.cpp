// The signal indicator, and what a radio session does when its signal goes and comes back.
#include "tuner/SignalBars.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

// One set for the whole module, on purpose; window thread only.
SignalBars signalBars;
bool noSignalArmed = false;

void Disarm(HWND window) {
    KillTimer(window, eNOSIGNAL_TIMER);
    noSignalArmed = false;
}

} // namespace

void CVelDMBView::UpdateAntena(int snr) {
    if (snr < 0) {
        signalBars.Reset();
        if (GButton* antenna = Find(kElementAntenna))
            antenna->SetState(kButtonDisabled, IsToolVisibled());
        Disarm(m_hWnd);
        return;
    }
    if (GetCurrentType() == kSessionDAB)
        FollowRadioSignal(snr);
    if (m_uSNRDebug != 0)
        ShowSignalFigures(snr);
    else
        ShowSignalBars(snr);
}

void CVelDMBView::FollowRadioSignal(int snr) {
    const RadioSignalAction action =
        DecideRadioSignal(snr, {m_bNoSignal != 0, m_bSignalWait != 0, noSignalArmed, m_bOnAir != 0});
    if (action.postOnAir)
        PostMessageW(m_hWnd, WM_DMB_ONAIR, 0, 0);
    if (action.setOnAir)
        m_bOnAir = 1;
    if (action.restart)
        RunDAB();
    if (action.disarm)
        Disarm(m_hWnd);
    if (action.stop) {
        m_bSignalWait = 1;
        Stop();
    }
    if (action.arm) {
        noSignalArmed = true;
        SetTimer(m_hWnd, eNOSIGNAL_TIMER, NOSIGNAL_TIMEOUT, nullptr);
    }
}

void CVelDMBView::ShowSignalFigures(int snr) {
    if (GButton* antenna = Find(kElementAntenna)) {
        if (antenna->GetState() != kButtonPressed)
            antenna->SetState(kButtonPressed, 0);
        antenna->SetText(FormatW(WTEXT("%d"), snr).c_str(), IsToolVisibled());
    }
    if (GButton* text = Find(kElementDebugText)) {
        const WString figures = FormatW(WTEXT("RSSI: %2.2f, %d"), static_cast<double>(m_nRSSI.fRSSI), m_nRSSI.nValue);
        if (!text->IsVisible())
            text->Show(1, IsToolVisibled());
        text->SetText(figures.c_str(), IsToolVisibled());
    }
}

void CVelDMBView::ShowSignalBars(int snr) {
    const int level = signalBars.Add(snr);
    GButton* antenna = Find(kElementAntenna);
    if (level == kNoLevel || antenna == nullptr)
        return;
    if (antenna->GetState() != kButtonNormal)
        antenna->SetState(kButtonNormal, 0);
    if (const GImageSet* pictures = antenna->GetImageSet())
        antenna->SetBackground(pictures->GetImage(level), IsToolVisibled());
}
