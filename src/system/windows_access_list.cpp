#include "system/windows_access_list.h"

#include <aclapi.h>

#include <cstddef>

namespace quillmere::windows {

namespace {

bool KeepsAccessLists(HANDLE file) {
    DWORD features = 0;
    const bool known =
        GetVolumeInformationByHandleW(file, nullptr, 0, nullptr, nullptr, &features, nullptr, 0) != FALSE;
    return !known || (features & FILE_PERSISTENT_ACLS) != 0;
}

/// The list of who may do what with a file.
class AccessList {
 public:
    explicit AccessList(HANDLE file)
        : error_(GetSecurityInfo(file, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &entries_,
                                 nullptr, &descriptor_)) {}
    explicit AccessList(const std::wstring& path)
        : error_(GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                       nullptr, &entries_, nullptr, &descriptor_)) {}
    ~AccessList() { LocalFree(descriptor_); }
    AccessList(const AccessList&) = delete;
    AccessList& operator=(const AccessList&) = delete;

    bool IsKnown() const { return error_ == ERROR_SUCCESS; }

    /// Gives the list as it is, inherited entries included: SetSecurityInfo would replace these by what the
    /// file's present folder passes on. They stay marked as inherited, so that changes of the folder go on
    /// reaching them. Returns whether the system allowed it.
    bool GiveTo(HANDLE file) const {
        SetSecurityDescriptorControl(descriptor_, SE_DACL_AUTO_INHERIT_REQ, SE_DACL_AUTO_INHERIT_REQ);
        return SetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, descriptor_) != FALSE;
    }

    /// Whether both allow the same, be their entries inherited or not.
    bool Equals(const AccessList& other) const {
        if (entries_ == nullptr || other.entries_ == nullptr) return entries_ == other.entries_;
        if (entries_->AceCount != other.entries_->AceCount) return false;
        for (DWORD index = 0; index < entries_->AceCount; ++index) {
            if (Entry(index) != other.Entry(index)) return false;
        }
        return true;
    }

 private:
    /// The bytes of one entry, without the flag that marks it as inherited.
    std::string Entry(DWORD index) const {
        void* found = nullptr;
        if (GetAce(entries_, index, &found) == FALSE) return {};
        const auto* const header = static_cast<const ACE_HEADER*>(found);
        std::string bytes(static_cast<const char*>(found), header->AceSize);
        bytes[offsetof(ACE_HEADER, AceFlags)] = static_cast<char>(header->AceFlags & ~INHERITED_ACE);
        return bytes;
    }

    PACL entries_ = nullptr;  ///< part of the descriptor; null when everyone may do everything
    PSECURITY_DESCRIPTOR descriptor_ = nullptr;
    DWORD error_;
};

}  // namespace

bool TakeOverAccessList(HANDLE file, const std::wstring& replaced) {
    if (!KeepsAccessLists(file)) return true;
    const AccessList wanted(replaced);
    if (!wanted.IsKnown()) return false;
    if (wanted.GiveTo(file)) return true;
    const AccessList given(file);
    return given.IsKnown() && given.Equals(wanted);
}

}  // namespace quillmere::windows
