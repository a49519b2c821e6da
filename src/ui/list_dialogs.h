#pragma once

#include "toolkit/prompts.h"

namespace quillmere {

// The dialogs that ask for a filter list file, the same in every window.

inline FileDialog ListToLoadDialog() {
    return {FileDialog::Purpose::Open, "Select a list file to load",
            "List Files (*.LST)|*.LST|All Files (*.*)|*.*", "*.LST", false};
}

inline FileDialog ListToSaveDialog() {
    return {FileDialog::Purpose::Save, "Select a file to save this list to",
            "List Files (*.LST)|*.LST|All Files (*.*)|*.*", "*.LST", true};
}

}  // namespace quillmere
