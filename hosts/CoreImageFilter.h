// What the library exports to hosts: the plug-in object, and plain functions for what surrounds it,
// so that a host that only opens the bundle needs no other symbol. Nothing throws out of them.
//
//   void* bundle = dlopen("…/CoreImageFilter/CoreImageFilter.so", RTLD_NOW);
//   auto create = reinterpret_cast<decltype(&CIFCreatePlugIn)>(dlsym(bundle, "CIFCreatePlugIn"));
//   ICoreImageFilter* plugIn = create(CIF_PLUGIN_VERSION);
//
// All calls come from one thread. The bundle stays open as long as anything it made is in use.
#pragma once

#include "plugin/ICoreImageFilter.h"

#include <cstddef>
#include <cstdint>

#define CIF_PLUGIN_VERSION 2

// A picture in the form of these functions; `picture` is what the plug-in object takes and gives,
// so that a host may put a result into a CIFPicture of its own to read it.
struct CIFPicture {
    foundation::PictureRef picture;
};

extern "C" {

// ---- The plug-in object

// A new object for the interface of that major version; null when this library has another one.
ICoreImageFilter* CIFCreatePlugIn(std::uint32_t version) noexcept;
// Null is allowed.
void CIFReleasePlugIn(ICoreImageFilter* plugIn) noexcept;

// The platform version that the filter catalogue is made for, 1404 unless told otherwise here or by
// the environment variable CIF_TOOLKIT_VERSION; below 949 the older, shorter form. Call it before
// CIFCreatePlugIn.
void CIFSetToolkitVersion(double version) noexcept;
// The language of all strings ("de", "fr_CA", …), "" to follow the environment again. Before
// CIFCreatePlugIn.
void CIFSetLanguage(const char* language) noexcept;
// Receives the log, line by line, in place of standard error; null restores that.
void CIFSetLogSink(void (*sink)(const char* line, void* context), void* context) noexcept;

// ---- Making pictures. Null on failure; `error`, when not null, then receives one line of at most
// errorSize bytes with its final zero. What is made is given back with CIFPictureRelease.

// Copies pixels: red, green, blue, alpha, not premultiplied, top row first. bitsPerComponent is 8
// or 16 (the machine's byte order). The size in points is that in pixels.
CIFPicture* CIFPictureFromPixels(const void* pixels, std::int32_t width, std::int32_t height,
                                 std::size_t bytesPerRow, std::int32_t bitsPerComponent,
                                 char* error, std::size_t errorSize) noexcept;
// Any readable file: PNG, JPEG, TIFF, WebP, PDF, EPS, SVG.
CIFPicture* CIFPictureFromFile(const char* path, char* error, std::size_t errorSize) noexcept;
CIFPicture* CIFPictureFromBytes(const void* bytes, std::size_t length, char* error,
                                std::size_t errorSize) noexcept;
// The rectangle of an unrendered image, whose lower left corner lies at (x, y), y up.
CIFPicture* CIFPictureFromImage(const imaging::Image* image, std::int32_t x, std::int32_t y,
                                std::int32_t width, std::int32_t height,
                                std::int32_t bitsPerComponent, char* error,
                                std::size_t errorSize) noexcept;
void CIFPictureRelease(CIFPicture* picture) noexcept;

// ---- Reading pictures. Zero on failure, else one.

// In points and in pixels; a result may be null when it is not wanted. A vector picture's pixels
// are its points, rounded up.
std::int32_t CIFPictureGetSize(const CIFPicture* picture, double* width, double* height,
                               std::int32_t* pixelsWide, std::int32_t* pixelsHigh) noexcept;
// Whether it holds a drawing rather than pixels.
std::int32_t CIFPictureIsVector(const CIFPicture* picture) noexcept;
// The whole picture scaled to width × height pixels, in the layout of CIFPictureFromPixels.
std::int32_t CIFPictureCopyPixels(const CIFPicture* picture, void* pixels, std::int32_t width,
                                  std::int32_t height, std::size_t bytesPerRow,
                                  std::int32_t bitsPerComponent) noexcept;
// Written whole or not at all; the format is told by the name's extension.
std::int32_t CIFPictureWriteToFile(const CIFPicture* picture, const char* path, char* error,
                                   std::size_t errorSize) noexcept;

// ---- Comparison for sorting shading materials: −1, 0, 1. "Sand" comes before whatever it is
// compared with, on either side; other names compare without regard to case. Not a strict weak
// order: sort with a stable insertion sort that passes names in list order. The context is not
// used.
int sortShadingMateriaNames(const char* a, const char* b, void* context) noexcept; // sic

} // extern "C"
