#include "System/SoundMotifs.h"

#include <span>

namespace veltrin::SoundMotifs {
namespace {

using Shape = SynthSound::Shape;

/// How a preset sounds. Times in seconds.
struct Timbre {
    Shape shape;   ///< of notes that do not glide
    double pitch;  ///< factor on the motif's frequencies
    double duration;
    double volume;
    double attack;
    double release;
};

constexpr Timbre timbreOf(PopupSoundPreset preset) {
    switch (preset) {
        case PopupSoundPreset::soft:
            return {Shape::tone, 0.75, 0.15, 0.11, 0.022, 0.11};
        case PopupSoundPreset::glass:
            return {Shape::tap, 1.5, 0.2, 0.09, 0.003, 0.19};
        case PopupSoundPreset::crisp:
            return {Shape::tap, 1.0, 0.06, 0.13, 0.003, 0.05};
        case PopupSoundPreset::classic:
            break;
    }
    return {Shape::tone, 1.0, 0.096, 0.12, 0.006, 0.07};
}

/// A note of a motif: frequencies in hertz, its start in seconds, its length and loudness as factors on the
/// timbre's.
struct Note {
    double frequency;
    double delay = 0;
    double endFrequency = 0;  ///< where it glides to; zero for a note that stays
    double length = 1;
    double loudness = 1;
    bool isAir = false;  ///< half noise
};

SynthSound sound(const Note& note, const Timbre& timbre) {
    const double start = note.frequency * timbre.pitch;
    const double end = note.endFrequency * timbre.pitch;
    SynthSound sound;
    if (note.isAir) {
        sound.kind = SynthSound::whoosh(start, end);
    } else if (note.endFrequency > 0) {
        sound.kind = SynthSound::chirp(start, end);
    } else {
        sound.kind = {timbre.shape, start, start};
    }
    sound.duration = timbre.duration * note.length;
    sound.volume = timbre.volume * note.loudness;
    sound.attack = timbre.attack;
    sound.release = timbre.release * note.length;
    return sound;
}

Steps played(std::span<const Note> notes, PopupSoundPreset preset) {
    const Timbre timbre = timbreOf(preset);
    Steps steps;
    for (const Note& note : notes)
        steps.push_back({sound(note, timbre), note.delay});
    return steps;
}

// Fifths and fourths, so that motifs that overlap never rub.
constexpr auto optimizePopup = std::to_array<Note>({{720}, {1040, 0.055}});
constexpr auto optimizeCompletion =
    std::to_array<Note>({{720}, {1040, 0.07}, {.frequency = 760, .delay = 0.14, .length = 1.6}});
constexpr auto translatePopup = std::to_array<Note>({{520}, {720, 0.06}});
constexpr auto translateCompletion =
    std::to_array<Note>({{720}, {520, 0.075}, {.frequency = 780, .delay = 0.15, .length = 1.6}});
constexpr auto voicePopup = std::to_array<Note>({{.frequency = 420, .endFrequency = 560, .length = 1.4}});
constexpr auto voiceCompletion = std::to_array<Note>({{.frequency = 560, .endFrequency = 420, .length = 1.2},
                                                      {.frequency = 560, .delay = 0.11, .length = 1.4}});
constexpr auto smartSelectPopup = std::to_array<Note>({{.frequency = 880, .length = 0.7, .loudness = 0.8},
                                                       {.frequency = 1320, .delay = 0.045, .loudness = 0.8}});
constexpr auto smartSelectCompletion =
    std::to_array<Note>({{.frequency = 1320, .length = 0.7, .loudness = 0.8},
                         {.frequency = 880, .delay = 0.06, .length = 1.6, .loudness = 0.8}});
constexpr auto dragPopup =
    std::to_array<Note>({{.frequency = 292, .endFrequency = 520, .length = 2, .loudness = 0.8, .isAir = true},
                         {.frequency = 520, .delay = 0.08}});
constexpr auto dragCompletion =
    std::to_array<Note>({{292}, {438, 0.07}, {.frequency = 584, .delay = 0.14, .length = 1.6}});

struct Motif {
    std::span<const Note> popup;
    std::span<const Note> completion;
    double root;  ///< hertz; where the motif is at home
};

const Motif& motifOf(InteractionSoundChannel channel) {
    static constexpr auto all = std::to_array<Motif>({{optimizePopup, optimizeCompletion, 720},
                                                      {translatePopup, translateCompletion, 520},
                                                      {voicePopup, voiceCompletion, 420},
                                                      {smartSelectPopup, smartSelectCompletion, 880},
                                                      {dragPopup, dragCompletion, 292}});
    return all[static_cast<std::size_t>(channel)];
}

}  // namespace

Steps popupSteps(InteractionSoundChannel channel, PopupSoundPreset preset) {
    return played(motifOf(channel).popup, preset);
}

Steps completionSteps(InteractionSoundChannel channel, PopupSoundPreset preset) {
    return played(motifOf(channel).completion, preset);
}

SynthSound cancelSound(InteractionSoundChannel channel, PopupSoundPreset preset) {
    const double root = motifOf(channel).root;
    return sound({.frequency = root, .endFrequency = root / 1.5, .length = 1.2, .loudness = 0.8},
                 timbreOf(preset));
}

SynthSound smartSelectActionSound(PopupSoundPreset preset) {
    return sound({.frequency = 1320, .length = 0.6, .loudness = 0.7}, timbreOf(preset));
}

Steps thinkingTaps(InteractionSoundChannel channel, PopupSoundPreset preset) {
    const double root = motifOf(channel).root;
    Timbre timbre = timbreOf(preset);
    timbre.shape = Shape::tap;
    Steps steps;
    for (const Note& note : {Note{.frequency = root, .length = 0.5, .loudness = 0.3},
                             Note{.frequency = root, .delay = 0.12, .length = 0.5, .loudness = 0.22},
                             Note{.frequency = root * 1.5, .delay = 0.24, .length = 0.5, .loudness = 0.16}})
        steps.push_back({sound(note, timbre), note.delay});
    return steps;
}

Steps thinkingWhoosh(InteractionSoundChannel channel, PopupSoundPreset preset) {
    const double root = motifOf(channel).root;
    Timbre timbre = timbreOf(preset);
    // A breath is as long in every preset.
    timbre.duration = 0.42;
    timbre.attack = 0.16;
    timbre.release = 0.24;
    const Note in{.frequency = root, .endFrequency = root * 1.5, .loudness = 0.3, .isAir = true};
    const Note out{
        .frequency = root * 1.5, .delay = 0.46, .endFrequency = root, .loudness = 0.24, .isAir = true};
    return {{sound(in, timbre), in.delay}, {sound(out, timbre), out.delay}};
}

}  // namespace veltrin::SoundMotifs
