#include "DiscWriter.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <system_error>
#include <vector>

#include "AudioSynth.h"
#include "BinFile.h"
#include "Crc32.h"
#include "CueSheet.h"
#include "DataSector.h"
#include "DiscLayout.h"
#include "SidecarText.h"

namespace plattmix::discgen {

using audiocd::Crc32;

namespace {

constexpr int32_t kChunkSectors = 32;

// Produces sectors in chunks into the file and into the checksum of the span they belong to.
class SectorStream {
  public:
    SectorStream() : chunk_(static_cast<size_t>(kChunkSectors * kAudioSectorBytes)) {}

    std::string Audio(AudioSynth& synth, int32_t count, BinFile& file, Crc32& span) {
        return Emit(count, kAudioSectorBytes, file, span, [&](uint8_t* at, int32_t) {
            synth.FillSector(std::span<uint8_t, kAudioSectorBytes>(at, kAudioSectorBytes));
        });
    }

    std::string Data(int32_t firstLba, int32_t count, BinFile& file, Crc32& span) {
        return Emit(count, kDataSectorBytes, file, span, [&](uint8_t* at, int32_t index) {
            StampDataSector(firstLba + index,
                            std::span<uint8_t, kDataSectorBytes>(at, kDataSectorBytes));
        });
    }

  private:
    template <typename Fill>
    std::string Emit(int32_t count, int32_t sectorBytes, BinFile& file, Crc32& span, Fill fill) {
        for (int32_t done = 0; done < count;) {
            const int32_t n = count - done < kChunkSectors ? count - done : kChunkSectors;
            for (int32_t k = 0; k < n; ++k) {
                fill(chunk_.data() + static_cast<size_t>(k * sectorBytes), done + k);
            }
            const std::span<const uint8_t> bytes(chunk_.data(),
                                                 static_cast<size_t>(n * sectorBytes));
            span.Update(bytes);
            if (std::string why = file.Write(bytes); !why.empty()) {
                return why;
            }
            done += n;
        }
        return "";
    }

    std::vector<uint8_t> chunk_;
};

// FNV-1a of the disc name: every disc gets its own noise.
uint32_t DiscSeed(const DiscSpec& spec) {
    uint32_t hash = 2166136261u;
    for (const char c : spec.name) {
        hash = (hash ^ static_cast<uint8_t>(c)) * 16777619u;
    }
    return hash;
}

// One track: its PREGAP silence and INDEX 00 hiss count towards the previous track's span
// (validation keeps gaps off first tracks, so that track exists), its content to its own.
std::string StreamTrack(const DiscSpec& spec, const DiscLayout& layout, size_t i,
                        SectorStream& stream, BinFile& bin, std::vector<Crc32>& spans) {
    const TrackSpec& t = spec.tracks[i];
    const int number = static_cast<int>(i + 1);
    if (t.pregapSectors > 0) {
        spans[i - 1].UpdateZeros(static_cast<uint64_t>(t.pregapSectors) * kAudioSectorBytes);
    }
    if (t.indexZeroSectors > 0) {
        AudioSynth hiss(number, AudioSynth::Voice::Hiss, DiscSeed(spec));
        if (std::string why = stream.Audio(hiss, t.indexZeroSectors, bin, spans[i - 1]);
            !why.empty()) {
            return why;
        }
    }
    if (t.mode == TrackMode::Mode1) {
        return stream.Data(layout.tracks[i].startLba, t.sectors, bin, spans[i]);
    }
    AudioSynth synth(number, AudioSynth::Voice::Chord, DiscSeed(spec));
    return stream.Audio(synth, t.sectors, bin, spans[i]);
}

// Closes the current BIN file and records it.
std::string FinishFile(BinFile& bin, const std::filesystem::path& path,
                       std::vector<FileInfo>& files) {
    if (std::string why = bin.Close(); !why.empty()) {
        return why;
    }
    files.push_back({path, bin.Bytes(), bin.Crc()});
    return "";
}

// Streams every track in disc order, opening each BIN file at its first track.
std::string StreamTracks(const DiscSpec& spec, const DiscLayout& layout,
                         const std::filesystem::path& folder, bool write, std::vector<Crc32>& spans,
                         std::vector<FileInfo>& files) {
    SectorStream stream;
    BinFile bin;
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        const int file = spec.tracks[i].file;
        if (i == 0 || file != spec.tracks[i - 1].file) {
            if (i > 0) {
                const auto previous = folder / spec.files[static_cast<size_t>(file - 1)];
                if (std::string why = FinishFile(bin, previous, files); !why.empty()) {
                    return why;
                }
            }
            const auto path = folder / spec.files[static_cast<size_t>(file)];
            if (std::string why = bin.Open(write ? path : std::filesystem::path{}); !why.empty()) {
                return why;
            }
        }
        if (std::string why = StreamTrack(spec, layout, i, stream, bin, spans); !why.empty()) {
            return why;
        }
    }
    return FinishFile(bin, folder / spec.files.back(), files);
}

DiscDescription Describe(const DiscSpec& spec, const DiscLayout& layout,
                         const std::filesystem::path& folder, const std::vector<Crc32>& spans,
                         std::vector<FileInfo> files) {
    DiscDescription d;
    d.name = spec.name;
    d.cuePath = folder / (spec.name + ".cue");
    d.cueText = CueSheetText(spec, layout);
    d.title = spec.title;
    d.performer = spec.performer;
    for (size_t i = 0; i < spec.tracks.size(); ++i) {
        const TrackSpec& t = spec.tracks[i];
        const TrackPlacement& p = layout.tracks[i];
        d.tracks.push_back({static_cast<int>(i + 1), t.mode, t.session, p.startLba,
                            p.spanEndLba - p.startLba, t.pregapSectors, t.indexZeroSectors,
                            spans[i].Value(), t.title, t.performer});
    }
    d.sessions = layout.sessions;
    d.files = std::move(files);
    d.leadOutLba = layout.sessions.back().leadOutLba;
    return d;
}

std::string WriteText(const std::filesystem::path& path, const std::string& text) {
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (f == nullptr) {
        return "Kann nicht angelegt werden: " + path.string();
    }
    const bool written = std::fwrite(text.data(), 1, text.size(), f) == text.size();
    const bool closed = std::fclose(f) == 0;
    return written && closed ? "" : "Schreiben fehlgeschlagen: " + path.string();
}

Result<DiscDescription> Generate(const DiscSpec& spec, const std::filesystem::path& folder,
                                 bool write) {
    Result<DiscLayout> layout = LayOut(spec);
    if (!layout.ok()) {
        return Result<DiscDescription>::Fail(layout.error);
    }
    const std::filesystem::path cue = folder / (spec.name + ".cue");
    const std::filesystem::path sidecar = cue.string() + kSidecarExtension;
    if (write) {
        // The sheet goes last, so an interrupted run never leaves a sheet over partial files;
        // a sidecar of an earlier run must not stay behind a plain drive.
        std::error_code ec;
        std::filesystem::create_directories(folder, ec);
        if (!ec) {
            std::filesystem::remove(cue, ec);
        }
        if (!ec) {
            std::filesystem::remove(sidecar, ec);
        }
        if (ec) {
            return Result<DiscDescription>::Fail("Ordner nicht vorbereitet: " + folder.string() +
                                                 ": " + ec.message());
        }
    }
    std::vector<Crc32> spans(spec.tracks.size());
    std::vector<FileInfo> files;
    if (std::string why = StreamTracks(spec, *layout.value, folder, write, spans, files);
        !why.empty()) {
        return Result<DiscDescription>::Fail(why);
    }
    DiscDescription d = Describe(spec, *layout.value, folder, spans, std::move(files));
    if (!spec.drive.Plain()) {
        d.drivePath = sidecar;
    }
    if (write) {
        if (!spec.drive.Plain()) {
            if (std::string why = WriteText(sidecar, SidecarText(spec.drive)); !why.empty()) {
                return Result<DiscDescription>::Fail(why);
            }
        }
        if (std::string why = WriteText(cue, d.cueText); !why.empty()) {
            return Result<DiscDescription>::Fail(why);
        }
    }
    return Result<DiscDescription>::Ok(std::move(d));
}

}  // namespace

Result<DiscDescription> WriteDisc(const DiscSpec& spec, const std::filesystem::path& folder) {
    try {
        return Generate(spec, folder, true);
    } catch (const std::exception& e) {
        return Result<DiscDescription>::Fail(std::string("Disc nicht erzeugt: ") + e.what());
    }
}

Result<DiscDescription> DescribeDisc(const DiscSpec& spec, const std::filesystem::path& folder) {
    try {
        return Generate(spec, folder, false);
    } catch (const std::exception& e) {
        return Result<DiscDescription>::Fail(std::string("Disc nicht beschrieben: ") + e.what());
    }
}

}  // namespace plattmix::discgen
