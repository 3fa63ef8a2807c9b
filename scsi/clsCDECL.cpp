#include "clsCDECL.h"

#include <dlfcn.h>

#include <cstring>

namespace plattmix::scsi {

namespace {

std::string LoaderError(const char* fallback) {
    const char* text = ::dlerror();
    return text != nullptr ? text : fallback;
}

// Every export is called as a C function taking machine words and answering 32 bits; on the
// platforms this program runs on that matches functions taking pointers or 32-bit integers.
using Word = uintptr_t;
template <typename... Words>
uint32_t Call(void* symbol, Words... words) {
    using Function = uint32_t (*)(Words...);
    Function function = nullptr;
    static_assert(sizeof function == sizeof symbol);
    std::memcpy(&function, &symbol, sizeof function);
    return function(words...);
}

uint32_t CallWith(void* symbol, std::span<const Word> a) {
    switch (a.size()) {
        case 0:
            return Call(symbol);
        case 1:
            return Call(symbol, a[0]);
        case 2:
            return Call(symbol, a[0], a[1]);
        case 3:
            return Call(symbol, a[0], a[1], a[2]);
        case 4:
            return Call(symbol, a[0], a[1], a[2], a[3]);
        case 5:
            return Call(symbol, a[0], a[1], a[2], a[3], a[4]);
        default:
            return Call(symbol, a[0], a[1], a[2], a[3], a[4], a[5]);
    }
}

}  // namespace

clsCDECL::~clsCDECL() {
    DllUnload();
}

bool clsCDECL::DllLoad(const std::string& library) {
    DllUnload();
    library_ = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    lastError_ = library_ != nullptr ? "" : LoaderError("cannot load the library");
    return library_ != nullptr;
}

uint32_t clsCDECL::CallFunc(const std::string& name, std::span<const uintptr_t> arguments) {
    if (library_ == nullptr) {
        lastError_ = "no library loaded";
        return 0;
    }
    if (arguments.size() > kMaxArguments) {
        lastError_ = "too many arguments for " + name;
        return 0;
    }
    ::dlerror();
    void* symbol = ::dlsym(library_, name.c_str());
    if (symbol == nullptr) {
        lastError_ = LoaderError("no such export");
        return 0;
    }
    lastError_.clear();
    return CallWith(symbol, arguments);
}

bool clsCDECL::DllUnload() {
    if (library_ == nullptr)
        return false;
    const bool unloaded = ::dlclose(library_) == 0;
    lastError_ = unloaded ? "" : LoaderError("cannot unload the library");
    library_ = nullptr;
    return unloaded;
}

}  // namespace plattmix::scsi
