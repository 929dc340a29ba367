// Slides: from the file that the radio source writes to the painted picture.
#include <cstdlib>
#include <span>

#include "dataservice/SlideBitmap.h"
#include "graph/DMBFilterIds.h"
#include "jpeg/JpegDecoder.h"
#include "platform/gdi.h"
#include "platform/velshell/VelDocument.h"
#include "view/DMBView.h"
#include "view/DMBViewIds.h"

namespace {

constexpr const WCHAR* kSlideFile = WTEXT("\\MotBody.dat");

// Output formats of the decoder that the bitmap's header can describe.
constexpr int kFormatRgb565 = 0;
constexpr int kFormatRgb24 = 1;

// The decoder takes lengths as a signed 32-bit number.
constexpr DWORD kLargestSlide = 0x7FFFFFFF;

// Trace lines of the slide path; the level is off in every shipped configuration.
constexpr bool kTraceSlides = false;

template <typename... Arguments> void TraceSlide(const WCHAR* format, const Arguments&... arguments) {
    if constexpr (kTraceSlides)
        OutputDebugStringW(FormatW(format, arguments...).c_str());
}

} // namespace

void CVelDMBView::OnSlideEvent() {
    if (GetPlayMode() == kPlayModePlaying && m_rcSlide.right != m_rcSlide.left && m_bOnAir != 0)
        PostMessageW(m_hWnd, WM_COMMAND, kCmdDecodeSlide, 0);
}

void CVelDMBView::DecodeMotBody() {
    const SectionLock lock(m_csSLS);
    const HANDLE file =
        CreateFileW(kSlideFile, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        TraceSlide(WTEXT("[DMB|APP] Can't open file - %s\n"), kSlideFile);
        return;
    }
    DWORD high = 0;
    const DWORD size = GetFileSize(file, &high);
    if (size > kLargestSlide || high != 0) {
        CloseHandle(file);
        return;
    }
    if (m_pMotBody == nullptr || m_nMotBodySize < size) {
        TraceSlide(WTEXT("[DMB|APP] Reallocated sls buffer from %u to %u\n"), m_nMotBodySize, size);
        auto* grown = static_cast<BYTE*>(std::realloc(m_pMotBody, size > 0 ? size : 1));
        if (grown == nullptr)
            std::free(m_pMotBody);
        m_pMotBody = grown;
        if (grown == nullptr) {
            m_nMotBodySize = 0;
            CloseHandle(file);
            return;
        }
    }
    DWORD done = 0;
    const bool complete = ReadFile(file, m_pMotBody, size, &done, nullptr) && done == size;
    CloseHandle(file);
    if (size > m_nMotBodySize)
        m_nMotBodySize = size;
    if (complete)
        StartDecode(m_pMotBody, static_cast<int>(size));
}

int CVelDMBView::StartDecode(unsigned char* data, int size) {
    JpegImageInfo info{};
    if (!MES_ParseJPEG(data, size, &info)) {
        OutputDebugStringW(WTEXT("[MES_ParseJPEG] failed!\n"));
        TraceSlide(WTEXT("[DMB|APP] SLS Parse Fail\r\n"));
        return 0;
    }
    info.outputFormat = kFormatRgb565;
    if (m_pSlideDib == nullptr) {
        // Zeroed: the border around a first, smaller picture is black and not what the heap held.
        m_pSlideDib = static_cast<BYTE*>(std::calloc(kSlideDibBytes, 1));
        if (m_pSlideDib == nullptr)
            return 0;
    }
    m_bSlideReady = 0;
    if (m_nSlideHeaderSize == 0) {
        BuildSlideHeader(std::span<BYTE, kSlideHeaderBytes>(m_pSlideDib, kSlideHeaderBytes));
        m_nSlideHeaderSize = kSlideHeaderBytes;
    }
    // The border of a smaller picture keeps the pixels of the one before, on purpose.
    if (!ImgDecodeJPEG(data, size, m_pSlideDib + m_nSlideHeaderSize, kSlideWidth, kSlideHeight, &info)) {
        TraceSlide(WTEXT("[DMB|APP] SLS Decoding Fail\r\n"));
        return 0;
    }
    if (info.outputFormat != kFormatRgb565 && info.outputFormat != kFormatRgb24)
        return 0;
    m_bSlideReady = 1;
    if (!GetDocument()->IsMinimized())
        InvalidateRect(m_hWnd, &m_rcSlide, FALSE);
    return 1;
}

// Called by the paint handler with m_csSLS held.
void CVelDMBView::PaintImage(unsigned char* dib) {
    if (GetDocument()->IsMinimized())
        return;
    const HDC client = GetDC(m_hWnd); // the window's own context, not the paint request's
    StretchDIBits(client, m_rcSlide.left, m_rcSlide.top, m_rcSlide.right - m_rcSlide.left,
                  m_rcSlide.bottom - m_rcSlide.top, 0, 0, kSlideWidth, kSlideHeight, dib + m_nSlideHeaderSize,
                  reinterpret_cast<const BITMAPINFO*>(dib), DIB_RGB_COLORS, SRCCOPY);
    ReleaseDC(m_hWnd, client);
}
