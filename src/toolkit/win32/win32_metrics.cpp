#include "toolkit/win32/win32_metrics.h"

namespace quillmere {

namespace {

/// The font for which the places of the captions were made. The newer font of Windows is too wide for them.
UniqueFont MakeFont(UINT dpi, bool underlined) {
    constexpr int pixelsAt96 = 11;
    LOGFONTW description{};
    description.lfHeight = -MulDiv(pixelsAt96, static_cast<int>(dpi), USER_DEFAULT_SCREEN_DPI);
    description.lfUnderline = underlined ? TRUE : FALSE;
    description.lfCharSet = DEFAULT_CHARSET;
    description.lfQuality = CLEARTYPE_QUALITY;
    lstrcpynW(description.lfFaceName, L"MS Shell Dlg 2", LF_FACESIZE);
    return UniqueFont(CreateFontIndirectW(&description));
}

int LineHeightOf(HFONT font) {
    const HDC screen = GetDC(nullptr);
    const HGDIOBJ before = SelectObject(screen, font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(screen, &metrics);
    SelectObject(screen, before);
    ReleaseDC(nullptr, screen);
    return metrics.tmHeight;
}

}  // namespace

Metrics::Metrics(UINT dpi)
    : dpi_(dpi),
      font_(MakeFont(dpi, false)),
      linkFont_(MakeFont(dpi, true)),
      lineHeight_(LineHeightOf(font_.get())) {}

int Metrics::Pixels(int twips) const {
    return MulDiv(twips, static_cast<int>(dpi_), twipsPerPixel * USER_DEFAULT_SCREEN_DPI);
}

}  // namespace quillmere
