// The JPEG decoder: still pictures (ITU-T T.81, baseline and progressive, JFIF and Exif files) into a caller's buffer.
//
// Three functions and one record. Bytes may come from anyone: no input crashes, reads or writes outside its buffers, or
// takes unbounded time or memory. The functions are not reentrant with respect to the last-error text only.
//
// Where things live, in the order of the data: HeaderScan and ExifScan (the probe), MarkerReader (headers, acceptance),
// BitReader and HuffmanTable, BaselineDecoder and ProgressiveDecoder (scans), Transform, Fit, RowConverter (colour),
// RgbOutput and YuvOutput (resampling), RgbToYuv; Status.h lists every refusal, PictureDecoder.cpp runs the stages.
#pragma once

// What the caller asks for and what the probe finds. Zero it before use. On a 32-bit machine fifteen 32-bit fields.
struct JpegImageInfo {
    void* progressContext; // handed back to the callback
    void (*progressCallback)(void* context,
                             int percent); // 80 just before colour conversion, 100 just after; may be null
    int outputFormat; // 0 = RGB565 (native 16-bit words, red on top), 1 = bytes R, G, B, 2 = planar YUV 4:2:0
    int reserved3;    // 0
    int noThumbnail;  // not 0: never decode an embedded thumbnail in place of the picture
    int reserved5[4]; // 0
    int imageWidth;   // set by the probe: pixels; 0 x 0 for a frame type that is not decoded
    int imageHeight;
    int reserved11[2]; // 0
    int thumbWidth;    // set by the probe: the embedded thumbnail's size as its tags give it, 0 without one
    int thumbHeight;
};
static_assert(sizeof(void*) != 4 || sizeof(JpegImageInfo) == 60);

// The probe: reads headers only and allocates nothing. Returns 1 and fills the sizes, or 0.
[[nodiscard]] int MES_ParseJPEG(const unsigned char* data, int length, JpegImageInfo* info);

// Decodes, shrinks the picture into targetWidth x targetHeight if it is larger, and centres it; pixels outside the fitted
// rectangle keep what they held. Rows are top-down without padding. `destination` must hold
//   format 0: targetWidth x targetHeight x 2 bytes
//   format 1: targetWidth x targetHeight x 3 bytes
//   format 2: targetWidth x targetHeight x 2 bytes, and at least the three planes (which take more only when a side is 1)
// Returns 1, or 0 with the reason in GetLastJpegError(). Damaged or missing coded data is no failure.
[[nodiscard]] int ImgDecodeJPEG(const unsigned char* data, int length, unsigned char* destination, int targetWidth,
                                int targetHeight, JpegImageInfo* info);

// The text of the last failure in this process, "" before the first. A diagnostic only.
[[nodiscard]] const char* GetLastJpegError();
