#include "LibburnWrite.h"

#include <cerrno>
#include <cstring>
#include <vector>

namespace plattmix::authoring {

namespace {

// Sessions the medium keeps by itself can be left open; on media libisoburn emulates sessions
// for, libburn would refuse the request.
bool KeepsOwnSessions(burn_drive* drive) {
    burn_multi_caps* raw = nullptr;
    if (burn_disc_get_multi_caps(drive, BURN_WRITE_NONE, &raw, 0) < 0)
        return false;
    const BurnMultiCapsPtr caps(raw);
    return caps && caps->multi_session == 1;
}

}  // namespace

ImageOptions::ImageOptions() {
    if (isoburn_igopt_new(&options_, 0) != 1) {
        options_ = nullptr;
        return;
    }
    isoburn_igopt_set_level(options_, 3);
    isoburn_igopt_set_extensions(options_, isoburn_igopt_rockridge | isoburn_igopt_joliet);
    isoburn_igopt_set_relaxed(
        options_, isoburn_igopt_allow_deep_paths | isoburn_igopt_allow_longer_paths |
                      isoburn_igopt_joliet_longer_paths | isoburn_igopt_joliet_long_names |
                      isoburn_igopt_joliet_utf16 | isoburn_igopt_dir_rec_mtime |
                      isoburn_igopt_joliet_rec_mtime);
}

BurnDiscPtr IsoFileDisc(const std::string& path, std::string& error) {
    BurnSourcePtr source(burn_file_source_new(path.c_str(), nullptr));
    if (!source) {
        error =
            "Die ISO-Datei kann nicht geöffnet werden: " + path + " (" + std::strerror(errno) + ")";
        return nullptr;
    }
    BurnDiscPtr disc(burn_disc_create());
    burn_session* session = burn_session_create();
    burn_track* track = burn_track_create();
    if (!disc || session == nullptr || track == nullptr) {
        burn_session_free(session);
        burn_track_free(track);
        error = "Zu wenig Speicher für den Brennauftrag.";
        return nullptr;
    }
    // Mode 1 data, padded to whole blocks.
    burn_track_define_data(track, 0, 0, 1, BURN_MODE1);
    const bool built = burn_track_set_source(track, source.get()) == BURN_SOURCE_OK &&
                       burn_session_add_track(session, track, BURN_POS_END) == 1 &&
                       burn_disc_add_session(disc.get(), session, BURN_POS_END) == 1;
    // The disc holds its session, the session its track, the track its source.
    burn_track_free(track);
    burn_session_free(session);
    if (!built) {
        error = "Der Brennauftrag lässt sich nicht zusammenstellen.";
        return nullptr;
    }
    return disc;
}

BurnWriteOptsPtr WriteOptions(burn_drive* drive, bool closeDisc) {
    BurnWriteOptsPtr options(burn_write_opts_new(drive));
    if (!options)
        return nullptr;
    burn_write_opts_set_perform_opc(options.get(), 1);
    burn_write_opts_set_underrun_proof(options.get(), 1);
    burn_write_opts_set_multi(options.get(), !closeDisc && KeepsOwnSessions(drive) ? 1 : 0);
    return options;
}

bool ChooseWriteType(burn_write_opts* options, burn_disc* disc, std::string& reasons) {
    std::vector<char> text(BURN_REASONS_LEN, '\0');
    if (burn_write_opts_auto_write_type(options, disc, text.data(), 0) != BURN_WRITE_NONE)
        return true;
    reasons = text.data();
    return false;
}

int64_t DiscSectors(burn_disc* disc) {
    int64_t sectors = 0;
    int sessionCount = 0;
    burn_session** sessions = burn_disc_get_sessions(disc, &sessionCount);
    for (int s = 0; s < sessionCount; ++s) {
        int trackCount = 0;
        burn_track** tracks = burn_session_get_tracks(sessions[s], &trackCount);
        for (int t = 0; t < trackCount; ++t)
            sectors += burn_track_get_sectors(tracks[t]);
    }
    return sectors;
}

}  // namespace plattmix::authoring
