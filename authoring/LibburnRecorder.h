// IRecorder over a drive grabbed through libisoburn.
#pragma once

#include <memory>

#include "BurnService.h"
#include "LibburnLibrary.h"

namespace plattmix::authoring {

std::unique_ptr<IRecorder> MakeLibburnRecorder(std::unique_ptr<GrabbedDrive> drive);

}  // namespace plattmix::authoring
