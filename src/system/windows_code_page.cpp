#include "base/utf8.h"
#include "system/code_page.h"
#include "system/windows_wide_text.h"

#include <windows.h>

#include <cwchar>

namespace quillmere {

namespace {

/// Read from the system's settings: GetACP returns the page of the process, which its manifest makes UTF-8.
UINT AnsiCodePage() {
    constexpr DWORD mostDigits = 16;
    wchar_t digits[mostDigits] = {};
    DWORD size = sizeof digits;
    const LSTATUS status =
        RegGetValueW(HKEY_LOCAL_MACHINE, L"SYSTEM\\CurrentControlSet\\Control\\Nls\\CodePage", L"ACP",
                     RRF_RT_REG_SZ, nullptr, digits, &size);
    const auto page = static_cast<UINT>(std::wcstoul(digits, nullptr, 10));
    return status == ERROR_SUCCESS && IsValidCodePage(page) != FALSE ? page : GetACP();
}

UINT Page() {
    static const UINT page = AnsiCodePage();
    return page;
}

/// Appends one character, or "?" when the page lacks it. The similar character that Windows may offer instead
/// would make an item's code match blocks that it does not name.
void AppendInPage(std::string& bytes, std::wstring_view character) {
    constexpr int mostBytes = 8;
    char inPage[mostBytes];
    BOOL lacking = FALSE;
    const bool utf8 = Page() == CP_UTF8;
    const int length = WideCharToMultiByte(Page(), utf8 ? 0 : WC_NO_BEST_FIT_CHARS, character.data(),
                                           static_cast<int>(character.size()), inPage, mostBytes, nullptr,
                                           utf8 ? nullptr : &lacking);
    if (length > 0 && lacking == FALSE) {
        bytes.append(inPage, static_cast<std::size_t>(length));
    } else {
        bytes += '?';
    }
}

}  // namespace

std::string Utf8FromCodePage(std::string_view bytes) {
    const int size = static_cast<int>(bytes.size());
    std::wstring wide(bytes.size(), L'\0');  // never longer than the bytes
    const int length = MultiByteToWideChar(Page(), 0, bytes.data(), size, wide.data(), size);
    return Utf8FromWide(std::wstring_view(wide).substr(0, static_cast<std::size_t>(length)));
}

std::string CodePageFromUtf8(std::string_view utf8) {
    std::string bytes;
    bytes.reserve(utf8.size());
    while (!utf8.empty()) {
        const std::string_view before = utf8;
        const bool valid = TakeCharacter(utf8).has_value();
        const std::string_view character = before.substr(0, before.size() - utf8.size());
        if (valid) {
            AppendInPage(bytes, WideFromUtf8(character));
        } else {
            bytes += '?';
        }
    }
    return bytes;
}

}  // namespace quillmere
