#pragma once

#include "toolkit/geometry.h"
#include "toolkit/win32/win32_handles.h"

namespace quillmere {

/// Sizes for the screen that a window is on: pixels per twip, and fonts.
class Metrics {
 public:
    /// `dpi`: dots per inch.
    explicit Metrics(UINT dpi);

    UINT Dpi() const { return dpi_; }
    int Pixels(int twips) const;
    HFONT Font() const { return font_.get(); }
    /// Underlined.
    HFONT LinkFont() const { return linkFont_.get(); }
    /// In pixels, from the top of one line of text to the top of the next.
    int LineHeight() const { return lineHeight_; }

 private:
    UINT dpi_;
    UniqueFont font_;
    UniqueFont linkFont_;
    int lineHeight_;
};

}  // namespace quillmere
