#pragma once

namespace quillmere {

/// Tells screen readers what Qt cannot know about two of our widgets: OptionWidget is a radio button although
/// it is not exclusive, and LinkWidget is a link that can be opened. To be called once.
void InstallAccessibility();

}  // namespace quillmere
