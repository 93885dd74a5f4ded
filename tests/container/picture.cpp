#include "tests/container/picture.hpp"

#include <objbase.h>
#include <wincodec.h>

#include <cstdlib>

#include "com/com_ptr.hpp"

namespace paylodge::test {
namespace {

constexpr UINT kBytesPerPixel = 4;

[[nodiscard]] UINT Stride(const Picture& picture) noexcept { return picture.width * kBytesPerPixel; }

[[nodiscard]] ComPtr<IWICImagingFactory> NewFactory() {
    ComPtr<IWICImagingFactory> factory;
    static_cast<void>(::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER, IID_IWICImagingFactory,
                                         factory.ReceiveVoid()));
    return factory;
}

[[nodiscard]] bool IsDifferent(const BYTE* first, const BYTE* second) noexcept {
    constexpr int kVisible = 48;
    for (UINT channel = 0; channel < 3; ++channel) {
        if (std::abs(first[channel] - second[channel]) > kVisible) {
            return true;
        }
    }
    return false;
}

}  // namespace

Picture PictureOf(HWND window) {
    RECT client{};
    ::GetClientRect(window, &client);
    Picture picture{static_cast<UINT>(client.right), static_cast<UINT>(client.bottom), {}};
    picture.bytes.resize(static_cast<size_t>(Stride(picture)) * picture.height);
    BITMAPINFO format{};
    format.bmiHeader = {sizeof(BITMAPINFOHEADER), client.right, -client.bottom, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    const HDC from = ::GetDC(window);
    const HDC to = ::CreateCompatibleDC(from);
    const HBITMAP bitmap = ::CreateCompatibleBitmap(from, client.right, client.bottom);
    const HGDIOBJ previous = ::SelectObject(to, bitmap);
    ::BitBlt(to, 0, 0, client.right, client.bottom, from, 0, 0, SRCCOPY);
    ::SelectObject(to, previous);
    ::GetDIBits(to, bitmap, 0, picture.height, picture.bytes.data(), &format, DIB_RGB_COLORS);
    ::DeleteObject(bitmap);
    ::DeleteDC(to);
    ::ReleaseDC(window, from);
    return picture;
}

Picture ReadPng(std::span<BYTE> file) {
    const auto factory = NewFactory();
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapDecoder> decoder;
    ComPtr<IWICBitmapFrameDecode> frame;
    ComPtr<IWICFormatConverter> pixels;
    Picture picture;
    const bool is_open = factory && SUCCEEDED(factory->CreateStream(stream.Receive())) &&
                         SUCCEEDED(stream->InitializeFromMemory(file.data(), static_cast<DWORD>(file.size()))) &&
                         SUCCEEDED(factory->CreateDecoderFromStream(
                             stream.Get(), nullptr, WICDecodeMetadataCacheOnDemand, decoder.Receive())) &&
                         SUCCEEDED(decoder->GetFrame(0, frame.Receive())) &&
                         SUCCEEDED(factory->CreateFormatConverter(pixels.Receive())) &&
                         SUCCEEDED(pixels->Initialize(frame.Get(), GUID_WICPixelFormat32bppBGR, WICBitmapDitherTypeNone,
                                                      nullptr, 0, WICBitmapPaletteTypeCustom)) &&
                         SUCCEEDED(pixels->GetSize(&picture.width, &picture.height));
    if (!is_open) {
        return {};
    }
    picture.bytes.resize(static_cast<size_t>(Stride(picture)) * picture.height);
    const HRESULT result =
        pixels->CopyPixels(nullptr, Stride(picture), static_cast<UINT>(picture.bytes.size()), picture.bytes.data());
    return SUCCEEDED(result) ? picture : Picture{};
}

bool WritePng(const Picture& picture, const wchar_t* file_name) {
    const auto factory = NewFactory();
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    WICPixelFormatGUID format = GUID_WICPixelFormat24bppBGR;
    ComPtr<IWICBitmap> bitmap;
    auto bytes = picture.bytes;
    return factory &&
           SUCCEEDED(factory->CreateBitmapFromMemory(picture.width, picture.height, GUID_WICPixelFormat32bppBGR,
                                                     Stride(picture), static_cast<UINT>(bytes.size()), bytes.data(),
                                                     bitmap.Receive())) &&
           SUCCEEDED(factory->CreateStream(stream.Receive())) &&
           SUCCEEDED(stream->InitializeFromFilename(file_name, GENERIC_WRITE)) &&
           SUCCEEDED(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.Receive())) &&
           SUCCEEDED(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache)) &&
           SUCCEEDED(encoder->CreateNewFrame(frame.Receive(), nullptr)) && SUCCEEDED(frame->Initialize(nullptr)) &&
           SUCCEEDED(frame->SetSize(picture.width, picture.height)) && SUCCEEDED(frame->SetPixelFormat(&format)) &&
           SUCCEEDED(frame->WriteSource(bitmap.Get(), nullptr)) && SUCCEEDED(frame->Commit()) &&
           SUCCEEDED(encoder->Commit());
}

double Difference(const Picture& first, const Picture& second) {
    const size_t size = static_cast<size_t>(first.width) * first.height;
    if (first.width != second.width || first.height != second.height || size == 0) {
        return 1;
    }
    size_t different = 0;
    for (size_t pixel = 0; pixel < size; ++pixel) {
        const size_t offset = pixel * kBytesPerPixel;
        if (IsDifferent(&first.bytes[offset], &second.bytes[offset])) {
            ++different;
        }
    }
    return static_cast<double>(different) / static_cast<double>(size);
}

}  // namespace paylodge::test
