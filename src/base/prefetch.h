#pragma once

namespace quillmere {

/// Asks the processor to fetch what lies at `address`, so that a later access need not wait for it. The
/// address may be any.
inline void Prefetch([[maybe_unused]] const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address, 1);
#endif
}

}  // namespace quillmere
