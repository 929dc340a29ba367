// The graph controller: which filters make a television graph or a radio graph, and how their pins are
// joined.
//
//   television   parser "1" -> video decoder -> video renderer
//                parser "2" -> BSAC decoder  -> audio renderer
//   radio        DAB source "1" -> MP3 decoder -> audio renderer
//
// The controller never runs, pauses or stops the graph. Order of use: construct; then per session an Init,
// the owner's own run and stop, and the matching Close. All calls come from one thread.
//
// Every operation gives 0 or a negative code: E_FAIL when a graph, filter or interface is missing, otherwise
// the filter's.
#pragma once

#include "graph/DMBFilterIds.h"

class DMB_API CDMBFilterControl {
public:
    // Borrows the graph: it is not counted, and nothing is released at the end. The filters belong to the
    // graph session, which a Close ends.
    explicit CDMBFilterControl(IGraphBuilder* pGraphBuilder);
    ~CDMBFilterControl();
    // Copies the eight pointers without counting them.
    CDMBFilterControl& operator=(const CDMBFilterControl& other);

    // Builds the television graph: live for mode 0, playing `fileName` for mode 1 and a name. A file that
    // cannot be opened and a link that the graph refuses still give 0.
    HRESULT InitDMBFilters(const WCHAR* fileName, int mode);
    // Disconnects and removes the five filters. Each step is tried again up to ten times, 100 ms apart; the
    // first step that never succeeds ends the close with E_FAIL and leaves the rest as it is. The fields keep
    // their old values, so a close without a load before it is not allowed.
    HRESULT CloseDMBFilters();

    // Builds the radio graph.
    HRESULT InitDABFilters();
    // Removes the three filters in one pass without retries; always 0 when there is a graph.
    HRESULT CloseDABFilters();
    // Lends the radio source's record of programme-associated data; null in *record when the source has none.
    HRESULT GetPadInfo(PadInfo** record);

    // Hands the parser the audio format it reported and joins the pins again. The graph must be built and
    // stopped.
    HRESULT HandleAudioChange();

    // Capture of the live stream. The name, a full path, comes before the start; the parser makes the file.
    HRESULT StartDMBCapture();
    HRESULT StopDMBCapture();
    HRESULT
    SetDMBCaputerFileName(const WCHAR* path); // the name is written so on purpose: the shell links to it

    // Position in a played file, in the parser's unit.
    HRESULT GetFilePos(ULONGLONG* first, LONGLONG* second);
    HRESULT SetFilePos(LONGLONG position);

protected:
    HRESULT LoadDMBFilters(const WCHAR* fileName, int mode);
    HRESULT ConnectDMBFilters();
    HRESULT DisconnectDMBFilters();
    HRESULT GetAudioInfo(DMBAudioInfo** info);
    HRESULT SetAudioInfo(int a, int b);

private:
    friend struct DMBFilterControlPeer; // the tests' way in

    IGraphBuilder* m_pGraphBuilder;
    IBaseFilter* m_pParser;
    IBaseFilter* m_pBSACDecoder;
    IBaseFilter* m_pAudioRenderer; // shared by both graphs; only one of them exists at a time
    IBaseFilter* m_pVideoDecoder;
    IBaseFilter* m_pVideoRenderer;
    IBaseFilter* m_pDABSource;
    IBaseFilter* m_pMP3Decoder;
};

static_assert(sizeof(CDMBFilterControl) == 8 * sizeof(void*));
