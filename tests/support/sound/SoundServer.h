#pragma once

#include "support/desktop/ChildProcess.h"

#include <QTemporaryDir>

#include <csignal>
#include <cstdint>
#include <vector>

namespace veltrin {

/// A sound server of the test's own, with a loudspeaker that goes nowhere and can be listened to. While it
/// lives, sound clients of this process find it and no other.
class SoundServer {
public:
    static constexpr int sampleRate = 44100;

    /// Not started yet: clients find no server.
    SoundServer();
    ~SoundServer();
    SoundServer(const SoundServer&) = delete;
    SoundServer& operator=(const SoundServer&) = delete;

    /// Returns when it answers; throws std::runtime_error when it does not.
    void start();
    void kill() { server_.kill(); }
    /// Stops it as a hung server would hang.
    void stop() { server_.send(SIGSTOP); }
    void resume() { server_.send(SIGCONT); }

    /// How many streams are playing.
    int streams() const;

    /// Hears what the loudspeaker plays, from its first sample on.
    class Listener {
    public:
        explicit Listener(SoundServer& server);
        /// The left side of everything so far, but for the first samples.
        std::vector<std::int16_t> heard(std::size_t without = 0) const;

    private:
        QString path_;
        ChildProcess recorder_;
    };

private:
    QString file(const char* name) const { return folder_.filePath(QString::fromLatin1(name)); }
    ChildProcess::Start command(const QStringList& words) const;

    QTemporaryDir folder_;
    QByteArray former_;
    ChildProcess server_;
    int listeners_ = 0;
};

}  // namespace veltrin
