// Owners of libisofs objects: each releases its object the way the library asks for.
// Only the image writer and the image reader include this (and with it libisofs.h).
#pragma once

// Without libburn.h, libisofs declares the image stream (struct burn_source) itself.
#ifndef LIBISOFS_WITHOUT_LIBBURN
#define LIBISOFS_WITHOUT_LIBBURN 1
#endif
#include <libisofs/libisofs.h>
#include <cstdint>  // libisofs.h uses the fixed-width types without including them

#include <cstdlib>
#include <memory>

namespace plattmix::authoring {

struct IsoImageRelease {
    void operator()(IsoImage* image) const { iso_image_unref(image); }
};
struct IsoWriteOptsRelease {
    void operator()(IsoWriteOpts* opts) const { iso_write_opts_free(opts); }
};
struct IsoReadOptsRelease {
    void operator()(IsoReadOpts* opts) const { iso_read_opts_free(opts); }
};
struct IsoDataSourceRelease {
    void operator()(IsoDataSource* source) const { iso_data_source_unref(source); }
};
struct IsoDirIterRelease {
    void operator()(IsoDirIter* iter) const { iso_dir_iter_free(iter); }
};
struct IsoStreamRelease {
    void operator()(IsoStream* stream) const { iso_stream_unref(stream); }
};
struct IsoFeaturesRelease {
    void operator()(IsoReadImageFeatures* features) const {
        iso_read_image_features_destroy(features);
    }
};
struct MallocRelease {
    void operator()(void* memory) const { std::free(memory); }
};

using IsoImagePtr = std::unique_ptr<IsoImage, IsoImageRelease>;
using IsoWriteOptsPtr = std::unique_ptr<IsoWriteOpts, IsoWriteOptsRelease>;
using IsoReadOptsPtr = std::unique_ptr<IsoReadOpts, IsoReadOptsRelease>;
using IsoDataSourcePtr = std::unique_ptr<IsoDataSource, IsoDataSourceRelease>;
using IsoDirIterPtr = std::unique_ptr<IsoDirIter, IsoDirIterRelease>;
using IsoStreamPtr = std::unique_ptr<IsoStream, IsoStreamRelease>;
using IsoFeaturesPtr = std::unique_ptr<IsoReadImageFeatures, IsoFeaturesRelease>;
template <typename T>
using MallocPtr = std::unique_ptr<T, MallocRelease>;

// The image stream with the thread that produces it. Releasing it ends that thread: a running
// one is cancelled first, then the source's data is freed (which waits for the thread).
class BurnSourceOwner {
  public:
    BurnSourceOwner() = default;
    ~BurnSourceOwner() { Release(); }

    BurnSourceOwner(const BurnSourceOwner&) = delete;
    BurnSourceOwner& operator=(const BurnSourceOwner&) = delete;

    burn_source** Out() { return &source_; }
    burn_source* get() const { return source_; }

    // Called when the image was read to its end: the thread needs no cancel.
    void MarkComplete() { complete_ = true; }

    void Release() {
        if (source_ == nullptr)
            return;
        if (!complete_ && source_->cancel != nullptr)
            source_->cancel(source_);
        // What burn_source_free() of libburn does with the last reference.
        if (--source_->refcount < 1) {
            if (source_->free_data != nullptr)
                source_->free_data(source_);
            std::free(source_);
        }
        source_ = nullptr;
    }

  private:
    burn_source* source_ = nullptr;
    bool complete_ = false;
};

}  // namespace plattmix::authoring
