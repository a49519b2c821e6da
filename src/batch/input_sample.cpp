#include "batch/input_sample.h"

#include <algorithm>
#include <array>

namespace quillmere {

namespace {

constexpr std::size_t sampleSize = std::size_t{64} * 1024;  // bytes

struct FileBeginning {
    std::string_view bytes;
    std::string_view remark;
    std::size_t offset = 0;  ///< of these bytes in the file
};
constexpr FileBeginning otherFiles[] = {
    {"\x1F\x8B", "it is compressed with gzip; unpack it first"},
    {"\x28\xB5\x2F\xFD", "it is compressed with zstd; unpack it first"},
    {"\3757zXZ", "it is compressed with xz; unpack it first"},
    {"1AY&SY", "it is compressed with bzip2; unpack it first", 4},
    {"ustar", "it is a tar archive; unpack it first", 257},
    {"PK\x03\x04", "it is a zip file; unpack it first"},
    {"<ITEMS>", "it is a filter list, not a world script; give it with --list"},
    {"\xEF\xBB\xBF<ITEMS>", "it is a filter list, not a world script; give it with --list"},
};

}  // namespace

std::string FirstBytes(FileSystem& system, const std::string& path) {
    const FileKind kind = system.KindOf(path);
    if (kind != FileKind::Regular && kind != FileKind::Hidden) return {};
    std::array<char, sampleSize> sample{};
    const std::size_t size = system.OpenForRead(path)->Read(sample.data(), sample.size());
    return {sample.data(), size};
}

LineEnd LineEndIn(std::string_view sample) {
    const bool lineFeedsAlone =
        sample.find('\r') == std::string_view::npos && sample.find('\n') != std::string_view::npos;
    return lineFeedsAlone ? LineEnd::Lf : LineEnd::CrLf;
}

bool HasMixedLineEnds(std::string_view sample) {
    if (sample.find('\r') == std::string_view::npos) return false;
    char before = 0;
    for (const char byte : sample) {
        if (byte == '\n' && before != '\r') return true;
        before = byte;
    }
    return false;
}

std::string_view NoWorldScript(std::string_view sample) {
    for (const FileBeginning& other : otherFiles) {
        const std::string_view there = sample.substr(std::min(other.offset, sample.size()));
        if (there.starts_with(other.bytes)) return other.remark;
    }
    return {};
}

}  // namespace quillmere
