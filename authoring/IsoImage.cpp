#include "IsoImage.h"

#include <memory>

#include "IsoFileStreamFaults.h"
#include "IsoImageCopy.h"
#include "IsoTreeBuilder.h"
#include "IsofsLibrary.h"
#include "IsofsOwners.h"

namespace plattmix::authoring {

namespace {

IsoImageResult Failed(std::string detail) {
    return {IsoOutcome::Failed, std::move(detail), 0};
}

std::string LibraryText(const std::string& what, int code, int imageId = -1) {
    const std::string message = IsofsLibrary::TakeMessages(imageId);
    return what + ": " + (message.empty() ? iso_error_to_msg(code) : message);
}

// How the image is written. ISO level 3 lets files of 4 GiB and more span several extents.
// Rock Ridge carries the real names, modes, owners, times and links. The relaxations keep deep
// and long trees whole in every directory tree instead of relocating or cutting them:
// - ISO 9660: deeper than 8 levels, paths longer than 255 characters;
// - Joliet: names of up to 103 characters (the extension's dot not counted) instead of 64;
//   longer ones are cut, keep their extension and get a digit where cut names would clash;
//   paths longer than 240 characters; UTF-16, so names outside the basic plane (emoji) survive
//   instead of becoming "_". Joliet has no links: Windows sees the files and folders only;
// - the volume name as given, mixed case included.
// All directory trees carry the files' modification times instead of the time of writing.
IsoWriteOptsPtr MakeWriteOptions(int fileSystems, int& error) {
    IsoWriteOpts* raw = nullptr;
    error = iso_write_opts_new(&raw, 0);
    IsoWriteOptsPtr opts(raw);
    if (error < 0)
        return nullptr;
    IsoWriteOpts* o = opts.get();
    iso_write_opts_set_iso_level(o, 3);
    iso_write_opts_set_rockridge(o, 1);
    iso_write_opts_set_joliet(o, (fileSystems & kFsJoliet) != 0 ? 1 : 0);
    iso_write_opts_set_allow_deep_paths(o, 1);
    iso_write_opts_set_allow_longer_paths(o, 1);
    iso_write_opts_set_joliet_long_names(o, 1);
    iso_write_opts_set_joliet_longer_paths(o, 1);
    iso_write_opts_set_joliet_utf16(o, 1);
    iso_write_opts_set_relaxed_vol_atts(o, 1);
    iso_write_opts_set_dir_rec_mtime(o, 7);
    return opts;
}

}  // namespace

int FileSystemsToCreate(int supported, bool hasLargeFile) {
    if (hasLargeFile && supported >= kFsUdf)
        return kFsUdf;
    return kFsIso9660 | kFsJoliet;
}

std::string NoFilesMessage(const std::string& source) {
    return "Keine Datei in dem Quellpfad: \r\n" + source + " gefunden!";
}

const char* IsoStatusText(IsoOutcome outcome) {
    switch (outcome) {
        case IsoOutcome::Done:
            return kIsoDone;
        case IsoOutcome::Aborted:
            return kIsoAborted;
        case IsoOutcome::Failed:
        case IsoOutcome::NoFiles:
            break;
    }
    return kIsoFailed;
}

IsoImageResult CreateIsoImage(const IsoImageParams& params, const FolderListing& listing,
                              const IsoJobHooks& hooks) {
    if (listing.ListAborted)
        return {IsoOutcome::Aborted, "", 0};
    if (listing.ListFiles.empty())
        return {IsoOutcome::NoFiles, "", 0};
    if (hooks.progress)
        hooks.progress(0);

    const IsofsLibrary library;
    if (!library.ok())
        return Failed("libisofs lässt sich nicht starten.");

    IsoImage* raw = nullptr;
    const std::string volume = params.volumeName.empty() ? kDefaultVolumeName : params.volumeName;
    if (const int error = iso_image_new(volume.c_str(), &raw); error < 0)
        return Failed(LibraryText("Das Image kann nicht angelegt werden", error));
    const IsoImagePtr image(raw);  // its name is the volume id

    auto faults = std::make_shared<IsoFileStreamFaults>();
    IsoTreeBuilder builder(*image, params.sourceFolder, faults);
    builder.ExcludeOutput(params.outputPath);
    IsoImageResult added = builder.AddAll(listing, hooks);
    if (added.outcome != IsoOutcome::Done)
        return added;

    int error = 0;
    const IsoWriteOptsPtr opts = MakeWriteOptions(
        FileSystemsToCreate(kFileSystemsSupported, listing.ListHasLargeFile), error);
    if (!opts)
        return Failed(LibraryText("Die Image-Einstellungen fehlen", error));
    BurnSourceOwner source;
    if (const int created = iso_image_create_burn_source(image.get(), opts.get(), source.Out());
        created < 0)
        return Failed(LibraryText("Das Image kann nicht erzeugt werden", created,
                                  iso_image_get_msg_id(image.get())));
    return CopyIsoImage(source, params.outputPath, hooks, *faults);
}

}  // namespace plattmix::authoring
