#pragma once

#include "toolkit/win32/win32_api.h"

#include <objbase.h>

#include <memory>

namespace quillmere {

struct ReleaseComObject {
    template <class Interface>
    void operator()(Interface* object) const {
        object->Release();
    }
};
template <class Interface>
using ComPtr = std::unique_ptr<Interface, ReleaseComObject>;

/// Sets up COM for this thread. The shell, file dialogs and the picture decoder need it.
class ComApartment {
 public:
    ComApartment()
        : entered_(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE))) {}
    ~ComApartment() {
        if (entered_) CoUninitialize();
    }
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

 private:
    bool entered_;
};

}  // namespace quillmere
