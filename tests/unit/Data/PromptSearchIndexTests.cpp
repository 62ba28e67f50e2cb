#include "Data/PromptSearchIndex.h"
#include "support/Slowdown.h"

#include <QElapsedTimer>

#include <gtest/gtest.h>

#include <random>

namespace veltrin {
namespace {

using namespace Qt::StringLiterals;

StoredPrompt prompt(const QString& title, const QString& content, const QStringList& tags = {}) {
    StoredPrompt prompt;
    prompt.title = title;
    prompt.content = content;
    prompt.tags = tags;
    return prompt;
}

std::vector<std::size_t> found(const std::vector<StoredPrompt>& prompts, const QString& query) {
    PromptSearchIndex index;
    index.prepare(prompts);
    return index.matches(query);
}

/// What a search means, at any cost.
std::vector<std::size_t> naivelyFound(const std::vector<StoredPrompt>& prompts, const QString& query) {
    const QString lowered = query.toLower();
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < prompts.size(); ++i) {
        bool hit = lowered.isEmpty() || prompts[i].title.toLower().contains(lowered) ||
                   prompts[i].content.toLower().contains(lowered);
        for (const QString& tag : prompts[i].tags)
            hit = hit || tag.toLower().contains(lowered);
        if (hit) positions.push_back(i);
    }
    return positions;
}

TEST(PromptSearchIndex, findsNothingAcrossTwoFields) {
    const std::vector<StoredPrompt> prompts{prompt(u"ab"_s, u"cd"_s, {u"ef"_s, u"gh"_s})};
    for (const QString& query : {u"bc"_s, u"de"_s, u"fg"_s, u"b\uFFFFc"_s, u"\uFFFF"_s})
        EXPECT_TRUE(found(prompts, query).empty()) << qPrintable(query);
    for (const QString& query : {u"AB"_s, u"cd"_s, u"F"_s, u"gh"_s, u""_s})
        EXPECT_EQ(found(prompts, query).size(), 1U) << qPrintable(query);
}

TEST(PromptSearchIndex, findsAtEveryPlaceOfABlock) {
    for (qsizetype before = 0; before < 140; ++before) {
        for (const qsizetype after : {0, 1, 63, 64, 65}) {
            const std::vector<StoredPrompt> prompts{
                prompt({}, QString(before, u'x') + u"针尖"_s + QString(after, u'x'))};
            EXPECT_EQ(found(prompts, u"针尖"_s).size(), 1U) << before << " " << after;
            EXPECT_TRUE(found(prompts, u"针x尖"_s).empty());
        }
    }
}

TEST(PromptSearchIndex, findsWhatAPlainSearchFinds) {
    std::mt19937 random(7);
    const QStringList pieces{u"a"_s, u"A"_s, u"b"_s, u"B"_s, u"ß"_s, u"İ"_s, u"针"_s, u"😀"_s};
    const auto text = [&](int length) {
        QString made;
        for (int i = static_cast<int>(random() % static_cast<unsigned>(length)); i > 0; --i)
            made += pieces[static_cast<qsizetype>(random() % 8)];
        return made;
    };
    std::vector<StoredPrompt> prompts;
    for (int i = 0; i < 300; ++i)
        prompts.push_back(prompt(text(20), text(200), {text(5), text(5)}));
    for (int i = 0; i < 300; ++i) {
        const QString query = text(6);
        EXPECT_EQ(found(prompts, query), naivelyFound(prompts, query)) << qPrintable(query);
    }
}

/// The limit of the product is 5 ms, which the benchmark measures; this build is not optimised.
TEST(PromptSearchIndex, staysQuickOnFiveThousandPrompts) {
    std::vector<StoredPrompt> prompts;
    for (int i = 0; i < 5000 / slowdown; ++i)
        prompts.push_back(
            prompt(u"提示词 %1"_s.arg(i), u"Write a 清晰 answer, step by step. "_s.repeated(15)));
    PromptSearchIndex index;
    index.prepare(prompts);
    for (const QString& query : {u"e"_s, u"st"_s, u"step z"_s, u"优化"_s, u"zzz"_s}) {
        QElapsedTimer timer;
        timer.start();
        index.matches(query);
        EXPECT_LT(static_cast<double>(timer.elapsed()), 500 * patience) << qPrintable(query);
    }
}

}  // namespace
}  // namespace veltrin
