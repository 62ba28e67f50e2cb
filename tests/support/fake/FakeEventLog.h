#pragma once

#include <QString>
#include <QStringList>

#include <cstddef>
#include <deque>

namespace veltrin {

/// What happened on the simulated desktop, in order. Only the latest entries are kept, so that a simulation
/// can run for long; `text` is the account to print when a random run goes wrong.
class FakeEventLog {
public:
    struct Entry {
        double time = 0;  ///< seconds on the virtual clock
        const char* what = "";
        QString detail;
    };

    void add(double time, const char* what, QString detail = {}) {
        if (capacity == 0) return;
        entries.push_back({time, what, std::move(detail)});
        if (entries.size() > capacity) entries.pop_front();
    }
    int count(const char* what) const {
        int found = 0;
        for (const Entry& entry : entries)
            found += qstrcmp(entry.what, what) == 0 ? 1 : 0;
        return found;
    }
    QString text() const {
        QStringList lines;
        for (const Entry& entry : entries)
            lines += QStringLiteral("%1 %2 %3")
                         .arg(entry.time, 0, 'f', 3)
                         .arg(QLatin1StringView(entry.what), entry.detail);
        return lines.join(u'\n');
    }

    std::deque<Entry> entries;
    std::size_t capacity = 2000;
};

}  // namespace veltrin
