#pragma once

#include "Platform/SoundOutput.h"
#include "support/fake/FakeRunLoop.h"

#include <vector>

namespace veltrin {

/// A loudspeaker on paper.
class FakeSoundOutput final : public SoundOutput {
public:
    explicit FakeSoundOutput(FakeRunLoop& loop) : loop_(loop) {}

    struct Played {
        double time;  ///< seconds
        QByteArray file;
    };

    std::unique_ptr<PlayingSound> play(const QByteArray& wavFile) override {
        if (!hasServer) return nullptr;
        played.push_back({loop_.now(), wavFile});
        return std::make_unique<Sound>(sounding);
    }

    std::vector<Played> played;
    std::shared_ptr<int> sounding = std::make_shared<int>(0);  ///< sounds that still are
    bool hasServer = true;

private:
    struct Sound final : PlayingSound {
        explicit Sound(std::shared_ptr<int> count) : count_(std::move(count)) { ++*count_; }
        ~Sound() override { --*count_; }
        std::shared_ptr<int> count_;
    };

    FakeRunLoop& loop_;
};

}  // namespace veltrin
