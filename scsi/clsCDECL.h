// Calls into a shared library by name: load it, call one of its exports with machine-word
// arguments and take its 32-bit result, unload it. The fall-back transport reaches its layer
// this way, so the program starts whether or not that library is there.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace plattmix::scsi {

class clsCDECL {
  public:
    // The most arguments CallFunc passes.
    static constexpr size_t kMaxArguments = 6;

    clsCDECL() = default;
    ~clsCDECL();
    clsCDECL(const clsCDECL&) = delete;
    clsCDECL& operator=(const clsCDECL&) = delete;

    // Loads the library (a path, or a name the dynamic loader looks up), after unloading the one
    // loaded before. False when it cannot be loaded; LastError tells why.
    bool DllLoad(const std::string& library);
    // Calls the export with the arguments (pointers passed as their address). 0 when there is no
    // library, no such export or too many arguments; LastError tells which.
    uint32_t CallFunc(const std::string& name, std::span<const uintptr_t> arguments = {});
    // False when nothing was loaded or the loader refused.
    bool DllUnload();
    bool Loaded() const { return library_ != nullptr; }
    // Empty after a call that worked.
    const std::string& LastError() const { return lastError_; }

  private:
    void* library_ = nullptr;
    std::string lastError_;
};

}  // namespace plattmix::scsi
