#include "ServiceChoice.h"

namespace plattmix::vdrive {

std::unique_ptr<IVirtualDriveService> ChooseVirtualDriveService() {
    return nullptr;  // the services follow
}

}  // namespace plattmix::vdrive
