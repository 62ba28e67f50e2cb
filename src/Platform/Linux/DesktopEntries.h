#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace veltrin {

/// One installed application, as its desktop file tells.
struct DesktopEntry {
    QString id;             ///< the file's place below "applications", '/' as '-', without ".desktop"
    QString name;           ///< in the user's language where the file has it
    QString startupClass;   ///< StartupWMClass; may be empty
    QString executable;     ///< the program's name without its folder; may be empty
    QString icon;           ///< a name in the icon theme, or a file; may be empty
    bool isHidden = false;  ///< NoDisplay: a helper of another application
};

/// The installed applications of the XDG data folders. Read at the first question, and again when a folder
/// changed and something was not found. A file in an earlier folder hides one of the same id in a later one.
class DesktopEntries {
public:
    /// The folders that hold "applications"; by default $XDG_DATA_HOME and $XDG_DATA_DIRS.
    explicit DesktopEntries(QStringList dataFolders = defaultDataFolders());
    static QStringList defaultDataFolders();

    std::optional<DesktopEntry> byId(const QString& id) const;
    /// The application of a window by the parts of its WM_CLASS: by StartupWMClass, else by the file's name,
    /// without regard to case.
    std::optional<DesktopEntry> byWindowClass(const QStringList& parts) const;
    /// The application that starts the program; none when several do and none of them is named after it.
    std::optional<DesktopEntry> byExecutable(const QString& name) const;

    /// Reads one desktop file's text; none when it is no application or deleted.
    static std::optional<DesktopEntry> parse(const QString& id, const QByteArray& text,
                                             const QStringList& languages);

private:
    template <typename Find>
    std::optional<DesktopEntry> lookUp(const Find& find) const;
    void read() const;
    bool isStale() const;

    QStringList folders_;
    mutable std::vector<DesktopEntry> entries_;
    mutable std::vector<QDateTime> stamps_;
    mutable bool isRead_ = false;
};

}  // namespace veltrin
