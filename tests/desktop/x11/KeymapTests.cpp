#include "Platform/Linux/X11/X11Keymap.h"

#include <gtest/gtest.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <map>
#include <string>

namespace veltrin {
namespace {

/// A keymap by its layout's name, and its keys by their XKB names.
class Layout {
public:
    explicit Layout(const char* layout, const char* variant = "") {
        xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
        const xkb_rule_names names{"evdev", "pc105", layout, variant, ""};
        xkb_keymap* keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
        map = std::make_unique<X11Keymap>(keymap);
        for (unsigned key = 8; key < 256; ++key) {
            if (const char* name = xkb_keymap_key_get_name(keymap, key))
                keys[name] = static_cast<quint8>(key);
        }
        xkb_keymap_unref(keymap);
        xkb_context_unref(context);
    }
    qint64 code(const char* name, unsigned group = 0) const { return map->virtualCode(keys.at(name), group); }
    std::vector<quint8> keysOf(qint64 code, unsigned group = 0) const { return map->keys(code, group); }

    std::unique_ptr<X11Keymap> map;
    std::map<std::string, quint8> keys;
};

TEST(X11Keymap, knowsTheKeysOfAUsKeyboard) {
    const Layout us("us");
    EXPECT_EQ(us.code("AC01"), 0);
    EXPECT_EQ(us.code("AB03"), 8);
    EXPECT_EQ(us.code("AD01"), 12);
    EXPECT_EQ(us.code("SPCE"), 49);
    EXPECT_EQ(us.code("RTRN"), 36);
    EXPECT_EQ(us.code("TAB"), 48);
    EXPECT_EQ(us.code("BKSP"), 51);
    EXPECT_EQ(us.code("ESC"), 53);
    EXPECT_EQ(us.code("INS"), KeyCode::insert);
    EXPECT_EQ(us.code("LEFT"), 123);
    EXPECT_EQ(us.code("UP"), 126);
    EXPECT_EQ(us.code("FK01"), 122);
    EXPECT_EQ(us.code("FK05"), 96);
}

TEST(X11Keymap, numbersTheDigitRowThrough) {
    const Layout us("us");
    const char* row[] = {"AE01", "AE02", "AE03", "AE04", "AE05", "AE06",
                         "AE07", "AE08", "AE09", "AE10", "AE11", "AE12"};
    qint64 code = 18;
    for (const char* key : row)
        EXPECT_EQ(us.code(key), code++) << key;
}

TEST(X11Keymap, theKeypadIsNotTheDigitRow) {
    const Layout us("us");
    EXPECT_EQ(us.code("KP1"), 83);
    EXPECT_EQ(us.code("KP0"), 82);
    EXPECT_EQ(us.code("KP9"), 92);
    EXPECT_EQ(us.code("KPEN"), 76);
    EXPECT_EQ(us.keysOf(18), std::vector<quint8>{us.keys.at("AE01")});
}

TEST(X11Keymap, goesByTheLetterOfTheUsersLayout) {
    const Layout german("de");
    EXPECT_EQ(german.code("AD06"), 6);   // z
    EXPECT_EQ(german.code("AB01"), 16);  // y
    const Layout french("fr");
    EXPECT_EQ(french.code("AD01"), 0);   // a
    EXPECT_EQ(french.code("AC01"), 12);  // q
    EXPECT_EQ(french.code("AE01"), 18);  // the digit stands there with Shift
    EXPECT_EQ(french.code("AE06"), 23);
}

TEST(X11Keymap, aLetterNeverHasTwoKeysThroughItsPosition) {
    const Layout dvorak("us", "dvorak");
    EXPECT_EQ(dvorak.keysOf(12).size(), 1U);
    EXPECT_EQ(dvorak.code("AD01"), 39);  // the apostrophe, not Q
    EXPECT_EQ(dvorak.code("AB02"), 12);
}

TEST(X11Keymap, anotherScriptTakesTheLatinGroupAndElseThePosition) {
    const Layout both("us,ru");
    EXPECT_EQ(both.code("AB04", 1), 9);
    EXPECT_EQ(both.keysOf(9, 1), std::vector<quint8>{both.keys.at("AB04")});
    const Layout russian("ru");
    EXPECT_EQ(russian.code("AB04"), 9);
    EXPECT_EQ(russian.code("AE01"), 18);
    const Layout german("de,ru");
    EXPECT_EQ(german.code("AD06", 1), 6);
}

TEST(X11Keymap, knowsWhetherAnyGroupHasLatinLetters) {
    for (const char* layout : {"us", "fr", "cn", "us,ru", "ru,us"})
        EXPECT_TRUE(Layout(layout).map->hasLatinLetters()) << layout;
    for (const char* layout : {"ru", "gr", "ru,gr"})
        EXPECT_FALSE(Layout(layout).map->hasLatinLetters()) << layout;
}

TEST(X11Keymap, eachGroupOfTwoLatinLayoutsHasItsOwnCodes) {
    const Layout two("us,de");
    EXPECT_EQ(two.code("AD06", 0), 16);
    EXPECT_EQ(two.code("AD06", 1), 6);
}

TEST(X11Keymap, translatesModifiersBothWaysAndKnowsTheirKeys) {
    const Layout us("us");
    EXPECT_EQ(us.map->modifiers(KeyFlags::all), 1U | 4U | 8U | 64U);
    EXPECT_EQ(us.map->flags(4U), KeyFlags::command);
    EXPECT_EQ(us.map->flags(8U | 64U), KeyFlags::option | KeyFlags::control);
    EXPECT_EQ(us.map->flags(2U | 16U | 128U), 0U);
    EXPECT_EQ(us.map->modifierKey(KeyFlags::command), us.keys.at("LCTL"));
    for (const char* key : {"LFSH", "RCTL", "LALT", "CAPS", "NMLK", "LWIN"}) {
        EXPECT_TRUE(us.map->isModifier(us.keys.at(key))) << key;
    }
    EXPECT_FALSE(us.map->isModifier(us.keys.at("SPCE")));
    EXPECT_FALSE(us.map->isModifier(us.keys.at("TAB")));
    const Layout german("de");
    EXPECT_TRUE(german.map->isModifier(german.keys.at("RALT")));
}

TEST(X11Keymap, hasAKeyThatMeansNothing) {
    const Layout us("us");
    ASSERT_TRUE(us.map->silentKey());
    EXPECT_EQ(us.map->virtualCode(*us.map->silentKey(), 0), KeyCode::unknown);
}

}  // namespace
}  // namespace veltrin
