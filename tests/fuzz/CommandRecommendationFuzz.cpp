#include "AI/CommandRecommender.h"
#include "Foundation/Characters.h"
#include "fuzz/FuzzInput.h"

using namespace veltrin;

namespace {

bool isRaw(const std::vector<CommandRecommendation>& list) {
    return list.size() == 1 && list[0].command == u"—" && list[0].category == u"raw";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString answer = QString::fromUtf8(fuzz::bytes(data, size));
    const auto list = CommandRecommender::parse(answer);
    fuzz::check(list.size() <= 5, "at most five rows");
    if (isRaw(list)) {
        fuzz::check(answer.startsWith(list[0].explanation), "a raw row holds the answer's beginning");
        fuzz::check(Characters::count(list[0].explanation) <= 500, "a raw row is short");
        return 0;
    }
    if (answer.contains(u'`')) return 0;
    const auto fenced =
        CommandRecommender::parse(QStringLiteral("```json\n") + answer + QStringLiteral("\n```"));
    fuzz::check(fenced == list, "a fence changes nothing");
    return 0;
}
