#include "Data/PromptCategory.h"

#include "Platform/Preferences.h"

#include <array>

namespace veltrin {
namespace {

const QString& preferenceKey() {
    static const QString key = QStringLiteral("assets_custom_categories");
    return key;
}

constexpr qsizetype tagCharacters = 8;

/// In the order of the cases.
constexpr std::array<const char16_t*, caseCount<PromptCategory>> words{
    u"全部", u"收藏", u"最近入库", u"绘画", u"视频", u"对话", u"代码", u"写作", u"商业"};

}  // namespace

QString categoryLabel(const QString& categoryTag) {
    const auto category = fromRawValue<PromptCategory>(categoryTag);
    return category ? QString::fromUtf16(words[static_cast<std::size_t>(*category)]) : categoryTag;
}

CustomCategory CustomCategory::made(const QString& name, const QString& accentHex) {
    CustomCategory category;
    category.id = QUuid::createUuid();
    category.name = name;
    category.icon = QStringLiteral("folder.fill");
    category.accentHex = accentHex;
    category.tag = QStringLiteral("custom-") + uuidText(QUuid::createUuid()).left(tagCharacters);
    return category;
}

std::vector<CustomCategory> CustomCategories::load(const Preferences& preferences) {
    const QString text = preferences.string(preferenceKey()).value_or(QStringLiteral("[]"));
    return readRecords<CustomCategory>(text.toUtf8()).value_or(std::vector<CustomCategory>());
}

void CustomCategories::save(Preferences& preferences, const std::vector<CustomCategory>& categories) {
    if (const auto array = RecordCodec<std::vector<CustomCategory>>::write(categories, DateStrategy::iso8601))
        preferences.set(preferenceKey(), QString::fromUtf8(array->serialized()));
}

}  // namespace veltrin
