#include "Platform/Linux/DesktopEntries.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSet>

#include <algorithm>
#include <utility>

namespace veltrin {
namespace {

constexpr qint64 largestFile = qint64{1024} * 1024;

QString applicationsOf(const QString& folder) {
    return folder + QStringLiteral("/applications");
}

/// "zh_CN.UTF-8@x" gives "zh_CN@x"-like keys no file has; the two that files have are language_COUNTRY and
/// language.
QStringList languagesOfUser() {
    QStringList languages;
    for (const QString& name : QLocale().uiLanguages()) {
        QString key = name;
        key.replace(u'-', u'_');
        languages << key << key.section(u'_', 0, 0);
        if (key.count(u'_') > 1) languages << key.section(u'_', 0, 0) + u'_' + key.section(u'_', -1);
    }
    languages.removeDuplicates();
    return languages;
}

QString unescaped(QStringView value) {
    QString result;
    result.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != u'\\' || i + 1 == value.size()) {
            result += value[i];
            continue;
        }
        switch (value[++i].unicode()) {
            case u's':
                result += u' ';
                break;
            case u'n':
                result += u'\n';
                break;
            case u't':
                result += u'\t';
                break;
            case u'r':
                result += u'\r';
                break;
            default:
                result += value[i];
                break;
        }
    }
    return result;
}

/// The program's name from an Exec line: the first word that is no "env" and no assignment, without its
/// folder.
QString programOf(const QString& exec) {
    QStringList words;
    QString word;
    bool quoted = false;
    for (const QChar character : exec) {
        if (character == u'"') {
            quoted = !quoted;
        } else if (character == u' ' && !quoted) {
            if (!word.isEmpty()) words << std::exchange(word, QString());
        } else {
            word += character;
        }
    }
    if (!word.isEmpty()) words << word;
    for (const QString& candidate : std::as_const(words)) {
        QString name = candidate.section(u'/', -1);
        if (name != QStringLiteral("env") && !name.contains(u'=')) return name;
    }
    return {};
}

bool same(const QString& a, const QString& b) {
    return a.compare(b, Qt::CaseInsensitive) == 0;
}

}  // namespace

DesktopEntries::DesktopEntries(QStringList dataFolders) : folders_(std::move(dataFolders)) {
}

QStringList DesktopEntries::defaultDataFolders() {
    QString home = qEnvironmentVariable("XDG_DATA_HOME");
    if (home.isEmpty()) home = QDir::homePath() + QStringLiteral("/.local/share");
    QString others = qEnvironmentVariable("XDG_DATA_DIRS");
    if (others.isEmpty()) others = QStringLiteral("/usr/local/share:/usr/share");
    return QStringList(home) + others.split(u':', Qt::SkipEmptyParts);
}

std::optional<DesktopEntry> DesktopEntries::parse(const QString& id, const QByteArray& text,
                                                  const QStringList& languages) {
    DesktopEntry entry;
    entry.id = id;
    qsizetype bestLanguage = languages.size();
    bool inEntry = false;
    bool isApplication = false;
    for (const QByteArray& raw : text.split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(u'[')) {
            if (inEntry) break;
            inEntry = line == QStringLiteral("[Desktop Entry]");
            continue;
        }
        const auto equals = line.indexOf(u'=');
        if (!inEntry || equals <= 0 || line.startsWith(u'#')) continue;
        const QString key = line.left(equals).trimmed();
        const QString value = unescaped(QStringView(line).mid(equals + 1).trimmed());
        if (key == QStringLiteral("Type")) {
            isApplication = value == QStringLiteral("Application");
        } else if (key == QStringLiteral("Hidden") && value == QStringLiteral("true")) {
            return std::nullopt;
        } else if (key == QStringLiteral("NoDisplay")) {
            entry.isHidden = value == QStringLiteral("true");
        } else if (key == QStringLiteral("StartupWMClass")) {
            entry.startupClass = value;
        } else if (key == QStringLiteral("Icon")) {
            entry.icon = value;
        } else if (key == QStringLiteral("Exec")) {
            entry.executable = programOf(value);
        } else if (key == QStringLiteral("Name")) {
            if (bestLanguage == languages.size()) entry.name = value;
        } else if (key.startsWith(QStringLiteral("Name[")) && key.endsWith(u']')) {
            const auto rank = languages.indexOf(key.mid(5, key.size() - 6));
            if (rank < 0 || rank >= bestLanguage) continue;
            bestLanguage = rank;
            entry.name = value;
        }
    }
    return isApplication ? std::optional(entry) : std::nullopt;
}

void DesktopEntries::read() const {
    entries_.clear();
    stamps_.clear();
    isRead_ = true;
    const QStringList languages = languagesOfUser();
    QSet<QString> seen;
    for (const QString& folder : folders_) {
        const QString root = applicationsOf(folder);
        stamps_.push_back(QFileInfo(root).lastModified());
        QDirIterator files(root, {QStringLiteral("*.desktop")}, QDir::Files,
                           QDirIterator::Subdirectories | QDirIterator::FollowSymlinks);
        while (files.hasNext()) {
            const QString path = files.next();
            QString id = path.mid(root.size() + 1);
            id.chop(QStringLiteral(".desktop").size());
            id.replace(u'/', u'-');
            if (seen.contains(id)) continue;
            seen.insert(id);
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) continue;
            if (auto entry = parse(id, file.read(largestFile), languages))
                entries_.push_back(std::move(*entry));
        }
    }
}

bool DesktopEntries::isStale() const {
    for (qsizetype i = 0; i < folders_.size(); ++i) {
        if (QFileInfo(applicationsOf(folders_[i])).lastModified() != stamps_[static_cast<std::size_t>(i)])
            return true;
    }
    return false;
}

template <typename Find>
std::optional<DesktopEntry> DesktopEntries::lookUp(const Find& find) const {
    if (!isRead_) read();
    auto found = find();
    if (found || !isStale()) return found;
    read();
    return find();
}

std::optional<DesktopEntry> DesktopEntries::byId(const QString& id) const {
    return lookUp([&]() -> std::optional<DesktopEntry> {
        for (const auto& entry : entries_) {
            if (entry.id == id) return entry;
        }
        return std::nullopt;
    });
}

std::optional<DesktopEntry> DesktopEntries::byWindowClass(const QStringList& parts) const {
    return lookUp([&]() -> std::optional<DesktopEntry> {
        for (const auto field : {&DesktopEntry::startupClass, &DesktopEntry::id}) {
            for (const QString& part : parts) {
                if (part.isEmpty()) continue;
                for (const auto& entry : entries_) {
                    if (same(entry.*field, part)) return entry;
                }
            }
        }
        return std::nullopt;
    });
}

std::optional<DesktopEntry> DesktopEntries::byExecutable(const QString& name) const {
    if (name.isEmpty()) return std::nullopt;
    return lookUp([&]() -> std::optional<DesktopEntry> {
        std::vector<const DesktopEntry*> starting;
        for (const auto& entry : entries_) {
            if (entry.executable == name && !entry.isHidden) starting.push_back(&entry);
        }
        if (starting.size() == 1) return *starting.front();
        for (const auto* entry : starting) {
            if (same(entry->id, name) || same(entry->id.section(u'.', -1), name)) return *entry;
        }
        return std::nullopt;
    });
}

}  // namespace veltrin
