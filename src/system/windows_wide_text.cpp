#include "system/windows_wide_text.h"

#include <windows.h>

namespace quillmere {

namespace {

std::wstring Widen(std::string_view utf8, DWORD flags) {
    const int size = static_cast<int>(utf8.size());
    std::wstring wide(utf8.size(), L'\0');  // never longer than the UTF-8
    const int length = MultiByteToWideChar(CP_UTF8, flags, utf8.data(), size, wide.data(), size);
    wide.resize(static_cast<std::size_t>(length));
    return wide;
}

}  // namespace

std::optional<std::wstring> WideFromValidUtf8(std::string_view utf8) {
    std::wstring wide = Widen(utf8, MB_ERR_INVALID_CHARS);
    if (wide.empty() && !utf8.empty()) return std::nullopt;
    return wide;
}

std::wstring WideFromUtf8(std::string_view utf8) {
    return Widen(utf8, 0);
}

std::string Utf8FromWide(std::wstring_view wide) {
    constexpr std::size_t mostBytesPerUnit = 3;
    std::string utf8(mostBytesPerUnit * wide.size(), '\0');
    const int length = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()),
                                           utf8.data(), static_cast<int>(utf8.size()), nullptr, nullptr);
    utf8.resize(static_cast<std::size_t>(length));
    return utf8;
}

}  // namespace quillmere
