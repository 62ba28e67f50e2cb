#include "support/fake/FakeKeyCodes.h"

#include <algorithm>
#include <array>

namespace veltrin {
namespace {

struct Key {
    char16_t plain;
    char16_t shifted;
    qint64 code;
};
constexpr auto keys = std::to_array<Key>({
    {u' ', u' ', 49},  {u'\n', u'\n', 36}, {u'\t', u'\t', 48}, {u'a', u'A', 0},   {u's', u'S', 1},
    {u'd', u'D', 2},   {u'f', u'F', 3},    {u'h', u'H', 4},    {u'g', u'G', 5},   {u'z', u'Z', 6},
    {u'x', u'X', 7},   {u'c', u'C', 8},    {u'v', u'V', 9},    {u'b', u'B', 11},  {u'q', u'Q', 12},
    {u'w', u'W', 13},  {u'e', u'E', 14},   {u'r', u'R', 15},   {u'y', u'Y', 16},  {u't', u'T', 17},
    {u'1', u'!', 18},  {u'2', u'@', 19},   {u'3', u'#', 20},   {u'4', u'$', 21},  {u'5', u'%', 22},
    {u'6', u'^', 23},  {u'7', u'&', 24},   {u'8', u'*', 25},   {u'9', u'(', 26},  {u'0', u')', 27},
    {u'-', u'_', 28},  {u'=', u'+', 29},   {u']', u'}', 30},   {u'o', u'O', 31},  {u'u', u'U', 32},
    {u'[', u'{', 33},  {u'i', u'I', 34},   {u'p', u'P', 35},   {u'l', u'L', 37},  {u'j', u'J', 38},
    {u'\'', u'"', 39}, {u'k', u'K', 40},   {u';', u':', 41},   {u'\\', u'|', 42}, {u',', u'<', 43},
    {u'/', u'?', 44},  {u'n', u'N', 45},   {u'm', u'M', 46},   {u'.', u'>', 47},  {u'`', u'~', 50},
});

}  // namespace

std::optional<FakeKeyOfCharacter> fakeKeyOf(QChar character) {
    for (const Key& key : keys) {
        if (character == key.plain) return FakeKeyOfCharacter{key.code, 0};
        if (character == key.shifted) return FakeKeyOfCharacter{key.code, KeyFlags::shift};
    }
    return std::nullopt;
}

QChar fakeCharacterOf(qint64 keyCode, quint64 flags) {
    if ((flags & ~KeyFlags::shift) != 0) return {};
    const auto found =
        std::find_if(keys.begin(), keys.end(), [keyCode](const Key& key) { return key.code == keyCode; });
    if (found == keys.end() || found->plain == u'\n' || found->plain == u'\t') return {};
    return (flags & KeyFlags::shift) != 0 ? found->shifted : found->plain;
}

}  // namespace veltrin
