#include "toolkit/win32/win32_picture.h"

#include "toolkit/win32/win32_com.h"

#include <wincodec.h>

namespace quillmere {

namespace {

/// The object to which `make` sets a pointer; null when `make` fails.
template <class Interface, class Make>
ComPtr<Interface> Made(Make make) {
    Interface* made = nullptr;
    return ComPtr<Interface>(SUCCEEDED(make(&made)) ? made : nullptr);
}

ComPtr<IWICImagingFactory> MakeFactory() {
    return Made<IWICImagingFactory>([](IWICImagingFactory** factory) {
        return CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                IID_IWICImagingFactory, reinterpret_cast<void**>(factory));
    });
}

/// The picture as the first, and only, frame of the image.
ComPtr<IWICBitmapFrameDecode> Decode(IWICImagingFactory& factory, std::string_view jpeg) {
    const auto stream = Made<IWICStream>([&](IWICStream** made) { return factory.CreateStream(made); });
    if (!stream) return nullptr;
    auto* const bytes = const_cast<BYTE*>(reinterpret_cast<const BYTE*>(jpeg.data()));  // only read
    if (FAILED(stream->InitializeFromMemory(bytes, static_cast<DWORD>(jpeg.size())))) return nullptr;
    const auto decoder = Made<IWICBitmapDecoder>([&](IWICBitmapDecoder** made) {
        return factory.CreateDecoderFromStream(stream.get(), nullptr, WICDecodeMetadataCacheOnDemand, made);
    });
    if (!decoder) return nullptr;
    return Made<IWICBitmapFrameDecode>(
        [&](IWICBitmapFrameDecode** made) { return decoder->GetFrame(0, made); });
}

/// `picture` in `size`, as blue, green and red bytes.
ComPtr<IWICFormatConverter> Scale(IWICImagingFactory& factory, IWICBitmapSource& picture, SIZE size) {
    const auto scaler =
        Made<IWICBitmapScaler>([&](IWICBitmapScaler** made) { return factory.CreateBitmapScaler(made); });
    auto converter = Made<IWICFormatConverter>(
        [&](IWICFormatConverter** made) { return factory.CreateFormatConverter(made); });
    if (!scaler || !converter) return nullptr;
    const auto width = static_cast<UINT>(size.cx);
    const auto height = static_cast<UINT>(size.cy);
    if (FAILED(scaler->Initialize(&picture, width, height, WICBitmapInterpolationModeFant))) return nullptr;
    if (FAILED(converter->Initialize(scaler.get(), GUID_WICPixelFormat24bppBGR, WICBitmapDitherTypeNone,
                                     nullptr, 0, WICBitmapPaletteTypeCustom)))
        return nullptr;
    return converter;
}

UniqueBitmap BitmapOf(IWICBitmapSource& picture, SIZE size) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = size.cx;
    info.bmiHeader.biHeight = -size.cy;  // the top row comes first
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    void* pixels = nullptr;
    UniqueBitmap bitmap(CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
    if (!bitmap) return nullptr;
    const auto rowBytes = static_cast<UINT>((size.cx * 3 + 3) / 4 * 4);
    const UINT allBytes = rowBytes * static_cast<UINT>(size.cy);
    if (FAILED(picture.CopyPixels(nullptr, rowBytes, allBytes, static_cast<BYTE*>(pixels)))) return nullptr;
    return bitmap;
}

}  // namespace

UniqueBitmap BitmapFromJpeg(std::string_view jpeg, SIZE size) {
    const auto factory = MakeFactory();
    if (!factory) return nullptr;
    const auto frame = Decode(*factory, jpeg);
    if (!frame) return nullptr;
    const auto scaled = Scale(*factory, *frame, size);
    return scaled ? BitmapOf(*scaled, size) : nullptr;
}

}  // namespace quillmere
