#include "support/sound/SoundServer.h"

#include "support/desktop/Waiting.h"

#include <QFile>
#include <QtEndian>

#include <sys/stat.h>

#include <stdexcept>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

constexpr const char* serverVariable = "PULSE_SERVER";
constexpr double patience = 20;

constexpr const char* script = R"(load-module module-native-protocol-unix auth-anonymous=1 socket=%1
load-module module-null-sink sink_name=speaker norewinds=1 rate=44100 channels=2
set-default-sink speaker
)";

}  // namespace

SoundServer::SoundServer() : former_(qgetenv(serverVariable)) {
    for (const char* name : {"run", "config", "state"}) {
        if (mkdir(file(name).toLocal8Bit().constData(), 0700) != 0) throw std::runtime_error("no folder");
    }
    QFile commands(file("server.pa"));
    if (!commands.open(QIODevice::WriteOnly)) throw std::runtime_error("no file");
    commands.write(QString::fromLatin1(script).arg(file("run/native")).toUtf8());
    qputenv(serverVariable, "unix:" + file("run/native").toLocal8Bit());
}

SoundServer::~SoundServer() {
    server_.kill();
    if (former_.isEmpty()) {
        qunsetenv(serverVariable);
    } else {
        qputenv(serverVariable, former_);
    }
}

ChildProcess::Start SoundServer::command(const QStringList& words) const {
    return {.command = words,
            .environment = {{u"PATH"_s, qEnvironmentVariable("PATH")},
                            {u"HOME"_s, folder_.path()},
                            {u"XDG_RUNTIME_DIR"_s, file("run")},
                            {u"XDG_CONFIG_HOME"_s, file("config")},
                            {u"PULSE_RUNTIME_PATH"_s, file("run")},
                            {u"PULSE_STATE_PATH"_s, file("state")},
                            {u"PULSE_SERVER"_s, u"unix:"_s + file("run/native")}},
            .outputFile = file("log")};
}

void SoundServer::start() {
    QFile::remove(file("run/native"));
    server_ = ChildProcess(command({u"pulseaudio"_s, u"-n"_s, u"-F"_s, file("server.pa"), u"--daemonize=no"_s,
                                    u"--fail=yes"_s, u"--use-pid-file=no"_s, u"--exit-idle-time=-1"_s,
                                    u"--high-priority=no"_s, u"--realtime=no"_s, u"--disable-shm=yes"_s}));
    const bool answers = waitUntil(patience, [this] {
        ChildProcess question(command({u"pactl"_s, u"info"_s}));
        question.waitForExit(patience);
        return question.exitStatus() == 0 || !server_.isRunning();
    });
    if (!answers || !server_.isRunning()) {
        QFile log(file("log"));
        log.open(QIODevice::ReadOnly);
        throw std::runtime_error("pulseaudio did not start: " + log.readAll().toStdString());
    }
}

int SoundServer::streams() const {
    ChildProcess::Start listing = command({u"pactl"_s, u"list"_s, u"short"_s, u"sink-inputs"_s});
    listing.outputFile = file("streams");
    QFile::remove(listing.outputFile);
    ChildProcess question(listing);
    question.waitForExit(patience);
    QFile list(listing.outputFile);
    return list.open(QIODevice::ReadOnly) ? static_cast<int>(list.readAll().count('\n')) : 0;
}

SoundServer::Listener::Listener(SoundServer& server)
    : path_(server.file("heard") + QString::number(++server.listeners_)) {
    ChildProcess::Start recording =
        server.command({u"parec"_s, u"-d"_s, u"speaker.monitor"_s, u"--latency-msec=5"_s, u"--raw"_s,
                        u"--format=s16le"_s, u"--rate=44100"_s, u"--channels=2"_s});
    recording.outputFile = path_;
    recorder_ = ChildProcess(recording);
    if (!waitUntil(patience, [this] { return !heard().empty(); }))
        throw std::runtime_error("parec does not hear the sound server");
}

std::vector<std::int16_t> SoundServer::Listener::heard(std::size_t without) const {
    QFile file(path_);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(static_cast<qint64>(without) * 4)) return {};
    const QByteArray bytes = file.readAll();
    std::vector<std::int16_t> left;
    for (qsizetype at = 0; at + 4 <= bytes.size(); at += 4)
        left.push_back(qFromLittleEndian<std::int16_t>(bytes.constData() + at));
    return left;
}

}  // namespace veltrin
