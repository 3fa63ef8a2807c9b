#include "imagedrive/DiscImage.h"

namespace plattmix::scsi::imagedrive {

const DiscTrack* DiscImage::TrackAt(int32_t lba) const {
    for (const DiscTrack& track : tracks) {
        if (lba >= track.areaStart && lba < track.end)
            return &track;
    }
    return nullptr;
}

const DiscTrack* DiscImage::TrackNumbered(int number) const {
    for (const DiscTrack& track : tracks) {
        if (track.number == number)
            return &track;
    }
    return nullptr;
}

namespace {

// Far beyond any real disc, small enough that addresses stay inside 32 bits.
constexpr int64_t kMaxDiscSectors = 100 * 60 * 75 * 10;

uint8_t ControlOf(const CueTrack& track) {
    uint8_t control = IsDataMode(track.mode) ? 0x4 : 0x0;
    if (track.copyPermitted)
        control |= 0x2;
    if (!IsDataMode(track.mode) && track.preEmphasis)
        control |= 0x1;
    if (!IsDataMode(track.mode) && track.fourChannel)
        control |= 0x8;
    return control;
}

// Where each track of one file lies in the file: byte offset and sector count of the part
// from its first index on. Tracks of different sector sizes may share a file.
struct FileSpan {
    int64_t offset = 0;
    int32_t count = 0;
};

ImageResult<std::vector<FileSpan>> SpansInFile(const CueFile& file, int64_t size,
                                               const std::string& sheetName) {
    using Result = ImageResult<std::vector<FileSpan>>;
    std::vector<FileSpan> spans(file.tracks.size());
    for (size_t k = 0; k < file.tracks.size(); ++k) {
        const CueTrack& track = file.tracks[k];
        const int32_t first = track.indexes.front().frames;
        if (k == 0) {
            spans[k].offset = int64_t{first} * StoredSectorSize(track.mode);
        } else {
            const CueTrack& before = file.tracks[k - 1];
            const int32_t sectors = first - before.indexes.front().frames;
            spans[k - 1].count = sectors;
            spans[k].offset =
                spans[k - 1].offset + int64_t{sectors} * StoredSectorSize(before.mode);
        }
        if (spans[k].offset >= size) {
            return Result::Fail(ImageMessage(sheetName, track.indexes.front().line,
                                             "Datei '" + file.name + "' ist zu kurz"));
        }
    }
    const CueTrack& last = file.tracks.back();
    const int64_t rest = size - spans.back().offset;
    if (rest % StoredSectorSize(last.mode) != 0) {
        return Result::Fail(ImageMessage(sheetName, file.line,
                                         "Datei '" + file.name + "' endet mitten in einem Sektor"));
    }
    if (rest / StoredSectorSize(last.mode) > kMaxDiscSectors) {
        return Result::Fail(ImageMessage(sheetName, file.line,
                                         "Datei '" + file.name + "' ist zu groß für eine CD"));
    }
    spans.back().count = static_cast<int32_t>(rest / StoredSectorSize(last.mode));
    for (size_t k = 0; k < file.tracks.size(); ++k) {
        const CueTrack& track = file.tracks[k];
        for (const CueIndex& index : track.indexes) {
            if (index.frames - track.indexes.front().frames >= spans[k].count) {
                return Result::Fail(
                    ImageMessage(sheetName, index.line, "Datei '" + file.name + "' ist zu kurz"));
            }
        }
    }
    return Result::Ok(std::move(spans));
}

// Appends one track at the cursor and moves the cursor past it.
DiscTrack PlaceTrack(const CueTrack& track, const FileSpan& span, int fileIndex,
                     int32_t extraPregap, int32_t& cursor) {
    DiscTrack placed;
    placed.number = track.number;
    placed.session = track.session;
    placed.mode = track.mode;
    placed.control = ControlOf(track);
    placed.areaStart = cursor;
    cursor += track.pregap + extraPregap;
    placed.fileIndex = fileIndex;
    placed.fileFirst = cursor;
    placed.fileCount = span.count;
    placed.fileOffset = span.offset;
    for (const CueIndex& index : track.indexes) {
        if (index.number == 1)
            placed.start = cursor + index.frames - track.indexes.front().frames;
    }
    cursor += span.count + track.postgap;
    placed.end = cursor;
    placed.title = track.title;
    placed.performer = track.performer;
    placed.songwriter = track.songwriter;
    placed.isrc = track.isrc;
    return placed;
}

}  // namespace

ImageResult<DiscImage> LayoutDisc(const CueSheet& sheet, std::span<const int64_t> fileSizes,
                                  const std::string& sheetName) {
    DiscImage disc;
    disc.title = sheet.title;
    disc.performer = sheet.performer;
    disc.songwriter = sheet.songwriter;
    disc.catalog = sheet.catalog;
    int32_t cursor = 0;
    for (size_t f = 0; f < sheet.files.size() && f < fileSizes.size(); ++f) {
        const CueFile& file = sheet.files[f];
        auto spans = SpansInFile(file, fileSizes[f], sheetName);
        if (!spans.ok())
            return ImageResult<DiscImage>::FailFrom(spans);
        disc.files.push_back(file.path);
        for (size_t k = 0; k < file.tracks.size(); ++k) {
            const CueTrack& track = file.tracks[k];
            int32_t extraPregap = 0;
            if (disc.sessions.empty() || disc.sessions.back().number != track.session) {
                if (!disc.sessions.empty()) {
                    disc.sessions.back().leadOut = cursor;
                    cursor += kSessionGap;
                    const bool hasGap = track.pregap > 0 || track.indexes.front().number == 0;
                    if (!hasGap)
                        extraPregap = kSessionPregap;
                }
                disc.sessions.push_back(DiscSession{track.session, disc.tracks.size(), 0, 0});
            }
            disc.tracks.push_back(
                PlaceTrack(track, spans.Value()[k], static_cast<int>(f), extraPregap, cursor));
            disc.sessions.back().lastTrack = disc.tracks.size() - 1;
        }
    }
    if (disc.tracks.empty())
        return ImageResult<DiscImage>::Fail(ImageMessage(sheetName, 0, "keine Spur"));
    disc.sessions.back().leadOut = cursor;
    return ImageResult<DiscImage>::Ok(std::move(disc));
}

DiscImage IsoDisc(const std::string& path, int32_t sectors) {
    DiscImage disc;
    disc.files.push_back(path);
    DiscTrack track;
    track.number = 1;
    track.mode = TrackMode::Mode1_2048;
    track.control = 0x4;
    track.end = sectors;
    track.fileIndex = 0;
    track.fileCount = sectors;
    disc.tracks.push_back(track);
    disc.sessions.push_back(DiscSession{1, 0, 0, sectors});
    return disc;
}

}  // namespace plattmix::scsi::imagedrive
