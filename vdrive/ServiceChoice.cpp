#include "ServiceChoice.h"

#include "LoopDriveService.h"
#include "UdisksBus.h"
#include "UdisksDriveService.h"

namespace plattmix::vdrive {

std::unique_ptr<IVirtualDriveService> ChooseVirtualDriveService() {
    std::string why;
    if (auto bus = UdisksBus::Connect("", why); bus && bus->Answers(why))
        return std::make_unique<UdisksDriveService>(std::move(bus));
    if (LoopDriveService::Usable())
        return std::make_unique<LoopDriveService>();
    return nullptr;
}

}  // namespace plattmix::vdrive
