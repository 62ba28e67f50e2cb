#include "Data/StoredPrompt.h"

#include <QDateTime>

#include <array>

namespace veltrin {
namespace {

struct SourceWord {
    const char16_t* source;
    const char16_t* word;
};
constexpr std::array<SourceWord, 7> sourceWords{{{u"ai", u"AI 生成"},
                                                 {u"imported", u"导入"},
                                                 {u"manual", u"手动"},
                                                 {u"workbench", u"反推工作台"},
                                                 {u"diagnosis", u"诊断优化"},
                                                 {u"memory", u"记忆动作"},
                                                 {u"drag", u"智能拖拽"}}};

QString shortDate(Date date, const QLocale& locale) {
    const auto moment = QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(date.secondsSince1970 * 1000));
    return locale.toString(moment.date(), QLocale::ShortFormat);
}

}  // namespace

QString StoredPrompt::sourceLabel() const {
    if (!sourceReference.isEmpty() && (source == u"drag" || source == u"workbench")) return sourceReference;
    for (const auto& [known, word] : sourceWords) {
        if (source == QStringView(known)) return QString::fromUtf16(word);
    }
    return QStringLiteral("反推");
}

QString StoredPrompt::formattedDate(const QLocale& locale) const {
    return shortDate(createdAt, locale);
}

QString StoredPrompt::formattedUpdated(const QLocale& locale) const {
    return shortDate(updatedAt, locale);
}

}  // namespace veltrin
