#pragma once

#include "platform/prompts.h"

namespace quillmere {

/// The dialog that asks for a filter list file to load, the same in every window.
inline FileDialog ListToLoadDialog() {
    return {FileDialog::Purpose::Open, "Select a list file to load",
            "List Files (*.LST)|*.LST|All Files (*.*)|*.*", "*.LST", false};
}

}  // namespace quillmere
