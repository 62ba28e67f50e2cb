#pragma once

#include "AI/AgentProfile.h"
#include "Foundation/Lifetime.h"
#include "Foundation/Observers.h"

#include <QSet>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

namespace veltrin {

class RunLoop;

/// Turns Skills, Markdown files with instructions, into an agent. Finds those in the user's skills folder and
/// takes others from files that the user chooses. Main thread; the files are read off it.
class SkillsSheet {
public:
    struct SkillItem {
        QString id;
        QString name;
        QString description;
        QString source;
        QString systemPrompt;

        friend bool operator==(const SkillItem& a, const SkillItem& b) = default;
    };

    /// Runs a piece of work on another thread.
    using Background = std::function<void(std::function<void()>)>;

    SkillsSheet(QString skillsDirectory, RunLoop& runLoop, Background background)
        : skillsDirectory_(std::move(skillsDirectory)),
          runLoop_(runLoop),
          background_(std::move(background)) {}

    /// Reads the skills folder anew, in the background. A folder that is missing is an empty one.
    void scanLocalSkills();
    bool isScanning() const { return isScanning_; }
    /// Reads files that the user chose, in the background. One with the name of a skill that is listed
    /// already takes its place. Files that cannot be read are skipped.
    void importSkills(const QStringList& paths);

    /// The local skills by name, then the imported ones as they came.
    const std::vector<SkillItem>& items() const { return items_; }

    void toggle(const QString& id);
    bool isSelected(const QString& id) const { return selected_.contains(id); }
    /// How many of the listed skills are selected.
    qsizetype selectedCount() const;

    /// The agent of the selected skills; none when none is selected. It is in no list yet.
    std::optional<AgentProfile> createFromSkills() const;

    /// The skill of a file of that name; none when the bytes are no UTF-8.
    static std::optional<SkillItem> skill(const QString& fileName, const QByteArray& utf8,
                                          const QString& source);

    Observers<> changed;

private:
    void read(std::function<QStringList()> paths, const QString& source);
    void take(std::vector<SkillItem> items, const QString& source);

    const QString skillsDirectory_;
    RunLoop& runLoop_;
    const Background background_;
    std::vector<SkillItem> items_;
    QSet<QString> selected_;
    bool isScanning_ = false;
    Lifetime lifetime_;
};

}  // namespace veltrin
