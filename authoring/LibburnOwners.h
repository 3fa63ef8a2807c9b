// Owners of the libburn and libisoburn objects a write is made of. Only the Libburn*.cpp files
// include this.
#pragma once

#include <memory>

#include "LibburnLibrary.h"

namespace plattmix::authoring {

struct BurnDiscFree {
    void operator()(burn_disc* disc) const { burn_disc_free(disc); }
};
struct BurnWriteOptsFree {
    void operator()(burn_write_opts* opts) const { burn_write_opts_free(opts); }
};
struct BurnSourceFree {
    void operator()(burn::burn_source* source) const { burn_source_free(source); }
};
struct BurnMultiCapsFree {
    void operator()(burn_multi_caps* caps) const { burn_disc_free_multi_caps(&caps); }
};
struct IsoImageUnref {
    void operator()(IsoImage* image) const { iso_image_unref(image); }
};

using BurnDiscPtr = std::unique_ptr<burn_disc, BurnDiscFree>;
using BurnWriteOptsPtr = std::unique_ptr<burn_write_opts, BurnWriteOptsFree>;
using BurnSourcePtr = std::unique_ptr<burn::burn_source, BurnSourceFree>;
using BurnMultiCapsPtr = std::unique_ptr<burn_multi_caps, BurnMultiCapsFree>;
using ImportedImagePtr = std::unique_ptr<IsoImage, IsoImageUnref>;

// How a new session's image is generated: as the image writer makes its files (ISO level 3,
// Rock Ridge and Joliet, deep and long names kept, the files' own times).
class ImageOptions {
  public:
    ImageOptions();
    ~ImageOptions() { isoburn_igopt_destroy(&options_, 0); }
    ImageOptions(const ImageOptions&) = delete;
    ImageOptions& operator=(const ImageOptions&) = delete;

    isoburn_imgen_opts* get() const { return options_; }

  private:
    isoburn_imgen_opts* options_ = nullptr;
};

}  // namespace plattmix::authoring
