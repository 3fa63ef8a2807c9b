#include "AudioSynth.h"

#include <cmath>
#include <cstddef>

namespace plattmix::discgen {
namespace {

constexpr int kSampleRate = 44100;
constexpr int kTableBits = 12;  // 4096 entries per sine period
constexpr int kTableSize = 1 << kTableBits;
constexpr int kPhaseShift = 32 - kTableBits;
constexpr int32_t kToneAmplitude = 7000;  // three tones plus noise stay below full scale
constexpr int32_t kNoiseAmplitude = 512;  // chord noise: [-512, 511]
constexpr int32_t kHissAmplitude = 64;    // INDEX 00 noise: [-64, 63]

// Twelve semitones from A3 in millihertz; tracks pick roots from it.
constexpr std::array<uint32_t, 12> kNotesMilliHz = {
    220000, 233082, 246942, 261626, 277183, 293665, 311127, 329628, 349228, 369994, 391995, 415305,
};

// sin(x) for x in [0, pi/2] by its Taylor series up to x^13 (error below 1e-9). Only basic
// double arithmetic, so the rounded table is the same with every maths library.
double QuarterSine(double x) {
    const double x2 = x * x;
    double term = x;
    double sum = x;
    for (int k = 1; k <= 6; ++k) {
        term = -term * x2 / static_cast<double>((2 * k) * (2 * k + 1));
        sum += term;
    }
    return sum;
}

std::array<int16_t, kTableSize> MakeSineTable() {
    constexpr int kQuarter = kTableSize / 4;
    constexpr double kHalfPi = 1.57079632679489661923;
    std::array<int16_t, kTableSize> table{};
    for (int i = 0; i <= kQuarter; ++i) {
        const double x = kHalfPi * static_cast<double>(i) / kQuarter;
        const auto v = static_cast<int16_t>(std::lround(QuarterSine(x) * kToneAmplitude));
        const auto at = [&](int index) -> int16_t& {
            return table[static_cast<size_t>(index % kTableSize)];
        };
        at(i) = v;                                        // rising first quarter
        at(2 * kQuarter - i) = v;                         // falling second quarter
        at(2 * kQuarter + i) = static_cast<int16_t>(-v);  // third quarter
        at(4 * kQuarter - i) = static_cast<int16_t>(-v);  // fourth quarter
    }
    return table;
}

const std::array<int16_t, kTableSize>& SineTable() {
    static const std::array<int16_t, kTableSize> table = MakeSineTable();
    return table;
}

// Phase increment per sample for a frequency in millihertz.
uint32_t StepFor(uint64_t milliHz) {
    return static_cast<uint32_t>((milliHz << 32) / (static_cast<uint64_t>(kSampleRate) * 1000));
}

uint32_t Note(int index) {
    return kNotesMilliHz[static_cast<size_t>(index % 12)];
}

void StoreLE16(uint8_t* p, int16_t sample) {
    const auto u = static_cast<uint16_t>(sample);
    p[0] = static_cast<uint8_t>(u & 0xFFu);
    p[1] = static_cast<uint8_t>(u >> 8);
}

}  // namespace

AudioSynth::AudioSynth(int trackNumber, Voice voice, uint32_t discSeed) : voice_(voice) {
    const int n = trackNumber < 1 ? 1 : trackNumber;
    const int root = (n * 5) % 12;  // walk the circle of fourths so neighbours differ
    // Left: major triad on the root. Right: minor triad an octave lower plus the root's fifth.
    left_.step = {StepFor(Note(root)), StepFor(Note(root + 4)), StepFor(Note(root + 7))};
    right_.step = {StepFor(Note(root) / 2), StepFor(Note(root + 3) / 2), StepFor(Note(root + 7))};
    left_.noise = (0x9E3779B9u ^ discSeed ^ static_cast<uint32_t>(n)) | 1u;
    right_.noise = (0x7F4A7C15u ^ discSeed ^ (static_cast<uint32_t>(n) << 8)) | 1u;
    tremoloStep_ = StepFor(1000u + 700u * static_cast<uint64_t>(n % 5));  // 1 Hz .. 3.8 Hz
}

uint32_t AudioSynth::NoiseStep(uint32_t& state) {
    state ^= state << 13;
    state ^= state >> 17;
    state ^= state << 5;
    return state;
}

// Gain in 1/32768 between 0.5 and 1.0, following a slow sine.
int32_t AudioSynth::NextGain() {
    const int32_t wave = SineTable()[tremoloPhase_ >> kPhaseShift];  // +-kToneAmplitude
    tremoloPhase_ += tremoloStep_;
    return 24576 + wave * 8192 / kToneAmplitude;
}

int16_t AudioSynth::NextSample(Channel& channel, int32_t gain) {
    const auto& table = SineTable();
    const uint32_t noise = NoiseStep(channel.noise);
    if (voice_ == Voice::Hiss) {
        return static_cast<int16_t>(static_cast<int32_t>(noise >> 25) - kHissAmplitude);
    }
    int32_t sum = 0;
    for (size_t k = 0; k < channel.phase.size(); ++k) {
        sum += table[channel.phase[k] >> kPhaseShift];
        channel.phase[k] += channel.step[k];
    }
    sum = sum * gain / 32768 + static_cast<int32_t>(noise >> 22) - kNoiseAmplitude;
    return static_cast<int16_t>(sum);
}

void AudioSynth::FillSector(std::span<uint8_t, 2352> sector) {
    uint8_t* p = sector.data();
    for (int frame = 0; frame < kFramesPerSector; ++frame) {
        const int32_t gain = NextGain();
        StoreLE16(p, NextSample(left_, gain));
        StoreLE16(p + 2, NextSample(right_, gain));
        p += 4;
    }
}

}  // namespace plattmix::discgen
