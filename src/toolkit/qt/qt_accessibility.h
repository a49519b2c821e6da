#pragma once

namespace quillmere {

/// Has screen readers told what the toolkit does not know of the program's own widgets: that an option button
/// is one, although it leaves it to others what excludes what, and that a link label is a link that can be
/// opened. Once for the program.
void InstallAccessibility();

}  // namespace quillmere
