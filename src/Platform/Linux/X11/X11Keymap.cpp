#include "Platform/Linux/X11/X11Keymap.h"

#include "Platform/Linux/X11/X11Connection.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <set>
#include <string_view>

namespace veltrin {
namespace {

struct CodeOfSymbol {
    xkb_keysym_t symbol;
    qint64 code;
};
/// Keys whose meaning does not depend on the script.
constexpr CodeOfSymbol fixedKeys[] = {
    {XKB_KEY_space, KeyCode::space},
    {XKB_KEY_Return, KeyCode::returnKey},
    {XKB_KEY_Tab, KeyCode::tab},
    {XKB_KEY_ISO_Left_Tab, KeyCode::tab},
    {XKB_KEY_BackSpace, KeyCode::backspace},
    {XKB_KEY_Escape, KeyCode::escape},
    {XKB_KEY_Insert, KeyCode::insert},
    {XKB_KEY_Delete, 117},
    {XKB_KEY_Home, 115},
    {XKB_KEY_End, 119},
    {XKB_KEY_Prior, 116},
    {XKB_KEY_Next, 121},
    {XKB_KEY_Left, 123},
    {XKB_KEY_Right, 124},
    {XKB_KEY_Down, 125},
    {XKB_KEY_Up, 126},
    {XKB_KEY_F1, 122},
    {XKB_KEY_F2, 120},
    {XKB_KEY_F3, 99},
    {XKB_KEY_F4, 118},
    {XKB_KEY_F5, 96},
    {XKB_KEY_F6, 97},
    {XKB_KEY_F7, 98},
    {XKB_KEY_F8, 100},
    {XKB_KEY_F9, 101},
    {XKB_KEY_F10, 109},
    {XKB_KEY_F11, 103},
    {XKB_KEY_F12, 111},
    // The keypad is not the digit row: its keys keep codes of their own, with and without Num Lock.
    {XKB_KEY_KP_0, 82},
    {XKB_KEY_KP_Insert, 82},
    {XKB_KEY_KP_1, 83},
    {XKB_KEY_KP_End, 83},
    {XKB_KEY_KP_2, 84},
    {XKB_KEY_KP_Down, 84},
    {XKB_KEY_KP_3, 85},
    {XKB_KEY_KP_Next, 85},
    {XKB_KEY_KP_4, 86},
    {XKB_KEY_KP_Left, 86},
    {XKB_KEY_KP_5, 87},
    {XKB_KEY_KP_Begin, 87},
    {XKB_KEY_KP_6, 88},
    {XKB_KEY_KP_Right, 88},
    {XKB_KEY_KP_7, 89},
    {XKB_KEY_KP_Home, 89},
    {XKB_KEY_KP_8, 91},
    {XKB_KEY_KP_Up, 91},
    {XKB_KEY_KP_9, 92},
    {XKB_KEY_KP_Prior, 92},
    {XKB_KEY_KP_Decimal, 65},
    {XKB_KEY_KP_Delete, 65},
    {XKB_KEY_KP_Separator, 65},
    {XKB_KEY_KP_Multiply, 67},
    {XKB_KEY_KP_Add, 69},
    {XKB_KEY_KP_Divide, 75},
    {XKB_KEY_KP_Enter, 76},
    {XKB_KEY_KP_Subtract, 78},
    {XKB_KEY_KP_Equal, 81},
};

/// The codes of the keys of a US keyboard by what stands on them. The digit row is numbered through, from 1
/// to =.
struct CodeOfCharacter {
    char character;
    qint64 code;
    std::string_view position;  ///< the XKB name of the key at that place
};
constexpr CodeOfCharacter characterKeys[] = {
    {'a', 0, "AC01"},   {'s', 1, "AC02"},  {'d', 2, "AC03"},   {'f', 3, "AC04"},  {'h', 4, "AC06"},
    {'g', 5, "AC05"},   {'z', 6, "AB01"},  {'x', 7, "AB02"},   {'c', 8, "AB03"},  {'v', 9, "AB04"},
    {'b', 11, "AB05"},  {'q', 12, "AD01"}, {'w', 13, "AD02"},  {'e', 14, "AD03"}, {'r', 15, "AD04"},
    {'y', 16, "AD06"},  {'t', 17, "AD05"}, {'1', 18, "AE01"},  {'2', 19, "AE02"}, {'3', 20, "AE03"},
    {'4', 21, "AE04"},  {'5', 22, "AE05"}, {'6', 23, "AE06"},  {'7', 24, "AE07"}, {'8', 25, "AE08"},
    {'9', 26, "AE09"},  {'0', 27, "AE10"}, {'-', 28, "AE11"},  {'=', 29, "AE12"}, {']', 30, "AD12"},
    {'o', 31, "AD09"},  {'u', 32, "AD07"}, {'[', 33, "AD11"},  {'i', 34, "AD08"}, {'p', 35, "AD10"},
    {'l', 37, "AC09"},  {'j', 38, "AC07"}, {'\'', 39, "AC11"}, {'k', 40, "AC08"}, {';', 41, "AC10"},
    {'\\', 42, "BKSL"}, {',', 43, "AB08"}, {'/', 44, "AB10"},  {'n', 45, "AB06"}, {'m', 46, "AB07"},
    {'.', 47, "AB09"},  {'`', 50, "TLDE"},
};

/// Fewer Latin letters than this and a group counts as one of another script.
constexpr int lettersOfLatinGroup = 20;

/// What the keys carry: the symbol of a key in a group at a shift level.
class Symbols {
public:
    explicit Symbols(xkb_keymap* keymap) : keymap_(keymap) {}

    xkb_keysym_t at(xkb_keycode_t key, unsigned group, unsigned level) const {
        const auto layouts = xkb_keymap_num_layouts_for_key(keymap_, key);
        if (layouts == 0) return XKB_KEY_NoSymbol;
        const xkb_keysym_t* symbols = nullptr;
        const int count = xkb_keymap_key_get_syms_by_level(keymap_, key, group % layouts, level, &symbols);
        return count > 0 ? symbols[0] : XKB_KEY_NoSymbol;
    }
    /// The character in lower case; 0 for one that is not ASCII.
    char characterAt(xkb_keycode_t key, unsigned group, unsigned level) const {
        const auto character = xkb_keysym_to_utf32(at(key, group, level));
        if (character <= 0x20 || character >= 0x7F) return 0;
        const char plain = static_cast<char>(character);
        return plain >= 'A' && plain <= 'Z' ? static_cast<char>(plain - 'A' + 'a') : plain;
    }
    std::string_view name(xkb_keycode_t key) const {
        const char* name = xkb_keymap_key_get_name(keymap_, key);
        return name == nullptr ? std::string_view() : std::string_view(name);
    }
    bool isSilent(xkb_keycode_t key) const { return xkb_keymap_num_layouts_for_key(keymap_, key) == 0; }
    int latinLetters(unsigned group) const {
        std::set<char> letters;
        for (unsigned key = 8; key < 256; ++key) {
            const char letter = characterAt(key, group, 0);
            if (letter >= 'a' && letter <= 'z') letters.insert(letter);
        }
        return static_cast<int>(letters.size());
    }

private:
    xkb_keymap* keymap_;
};

bool isModifierSymbol(xkb_keysym_t symbol) {
    return (symbol >= XKB_KEY_Shift_L && symbol <= XKB_KEY_Hyper_R) ||
           (symbol >= XKB_KEY_ISO_Lock && symbol <= XKB_KEY_ISO_Level5_Lock) || symbol == XKB_KEY_Num_Lock ||
           symbol == XKB_KEY_Mode_switch || symbol == XKB_KEY_Scroll_Lock;
}

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}
bool isLetter(char character) {
    return character >= 'a' && character <= 'z';
}

qint64 codeOf(char character) {
    const auto* found = std::find_if(std::begin(characterKeys), std::end(characterKeys),
                                     [&](const auto& entry) { return entry.character == character; });
    return found == std::end(characterKeys) ? KeyCode::unknown : found->code;
}

/// The character a key is known by: its letter, its digit (which some layouts have with Shift), its
/// punctuation.
char knownBy(const Symbols& symbols, xkb_keycode_t key, unsigned group) {
    const char plain = symbols.characterAt(key, group, 0);
    if (isLetter(plain) || isDigit(plain)) return plain;
    const char shifted = symbols.characterAt(key, group, 1);
    if (symbols.name(key).starts_with("AE") && isDigit(shifted)) return shifted;
    return plain;
}

qint64 codeBySymbol(const Symbols& symbols, xkb_keycode_t key, unsigned group,
                    std::optional<unsigned> latin) {
    const auto symbol = symbols.at(key, group, 0);
    const auto* fixed = std::find_if(std::begin(fixedKeys), std::end(fixedKeys),
                                     [&](const auto& entry) { return entry.symbol == symbol; });
    if (fixed != std::end(fixedKeys)) return fixed->code;
    return latin ? codeOf(knownBy(symbols, key, *latin)) : KeyCode::unknown;
}

}  // namespace

X11Keymap::X11Keymap(xkb_keymap* keymap) {
    const Symbols symbols(keymap);
    const unsigned groups = std::max<unsigned>(1, xkb_keymap_num_layouts(keymap));
    const unsigned lowest = std::max<unsigned>(8, xkb_keymap_min_keycode(keymap));
    const unsigned highest = std::min<unsigned>(255, xkb_keymap_max_keycode(keymap));

    std::optional<unsigned> firstLatin;
    for (unsigned group = groups; group-- > 0;) {
        if (symbols.latinLetters(group) >= lettersOfLatinGroup) firstLatin = group;
    }
    hasLatinLetters_ = firstLatin.has_value();
    for (unsigned group = 0; group < groups; ++group) {
        Table table;
        table.fill(KeyCode::unknown);
        const auto latin =
            symbols.latinLetters(group) >= lettersOfLatinGroup ? std::optional(group) : firstLatin;
        std::set<qint64> taken;
        for (unsigned key = lowest; key <= highest; ++key) {
            table[key] = codeBySymbol(symbols, key, group, latin);
            taken.insert(table[key]);
        }
        for (unsigned key = lowest; key <= highest; ++key) {
            if (table[key] != KeyCode::unknown) continue;
            for (const auto& entry : characterKeys) {
                if (entry.position == symbols.name(key) && !taken.contains(entry.code))
                    table[key] = entry.code;
            }
        }
        groups_.push_back(table);
    }

    for (unsigned key = lowest; key <= highest; ++key) {
        modifiers_[key] = isModifierSymbol(symbols.at(key, 0, 0));
        // The highest one: low codes without a meaning may belong to keys of another keyboard.
        if (symbols.isSilent(key)) silent_ = static_cast<Keycode>(key);
    }

    constexpr CodeOfSymbol modifierSymbols[] = {{XKB_KEY_Shift_L, KeyFlags::shift},
                                                {XKB_KEY_Control_L, KeyFlags::command},
                                                {XKB_KEY_Alt_L, KeyFlags::option},
                                                {XKB_KEY_Super_L, KeyFlags::control}};
    constexpr unsigned usualMasks[] = {XCB_MOD_MASK_SHIFT, XCB_MOD_MASK_CONTROL, XCB_MOD_MASK_1,
                                       XCB_MOD_MASK_4};
    for (std::size_t i = 0; i < flags_.size(); ++i) {
        flags_[i].flag = static_cast<quint64>(modifierSymbols[i].code);
        flags_[i].mask = usualMasks[i];
        for (unsigned key = lowest; key <= highest; ++key) {
            if (symbols.at(key, 0, 0) != modifierSymbols[i].symbol) continue;
            xkb_state* state = xkb_state_new(keymap);
            xkb_state_update_key(state, key, XKB_KEY_DOWN);
            const auto mask = xkb_state_serialize_mods(state, XKB_STATE_MODS_DEPRESSED) & 0xFFU;
            xkb_state_unref(state);
            if (mask == 0) continue;  // a symbol on a key without a modifier does not hold anything
            flags_[i].mask = mask;
            flags_[i].key = static_cast<Keycode>(key);
            break;
        }
    }
}

std::shared_ptr<const X11Keymap> X11Keymap::load(const X11Connection& connection) {
    struct Unref {
        void operator()(xkb_context* context) const { xkb_context_unref(context); }
        void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
    };
    if (!connection.hasXkb()) return nullptr;
    const std::unique_ptr<xkb_context, Unref> context(xkb_context_new(
        static_cast<xkb_context_flags>(XKB_CONTEXT_NO_DEFAULT_INCLUDES | XKB_CONTEXT_NO_ENVIRONMENT_NAMES)));
    if (!context) return nullptr;
    const auto device = xkb_x11_get_core_keyboard_device_id(connection.xcb());
    if (device < 0) return nullptr;
    const std::unique_ptr<xkb_keymap, Unref> keymap(
        xkb_x11_keymap_new_from_device(context.get(), connection.xcb(), device, XKB_KEYMAP_COMPILE_NO_FLAGS));
    return keymap ? std::make_shared<const X11Keymap>(keymap.get()) : nullptr;
}

qint64 X11Keymap::virtualCode(Keycode key, unsigned group) const {
    return groups_[group % groups_.size()][key];
}

std::vector<X11Keymap::Keycode> X11Keymap::keys(qint64 virtualCode, unsigned group) const {
    std::vector<Keycode> result;
    if (virtualCode == KeyCode::unknown) return result;
    const Table& table = groups_[group % groups_.size()];
    for (unsigned key = 8; key < 256; ++key) {
        if (table[key] == virtualCode) result.push_back(static_cast<Keycode>(key));
    }
    return result;
}

quint64 X11Keymap::flags(unsigned modifiers) const {
    quint64 result = 0;
    for (const auto& flag : flags_) {
        if ((modifiers & flag.mask) != 0) result |= flag.flag;
    }
    return result;
}

unsigned X11Keymap::modifiers(quint64 flags) const {
    unsigned result = 0;
    for (const auto& flag : flags_) {
        if ((flags & flag.flag) != 0) result |= flag.mask;
    }
    return result;
}

std::optional<X11Keymap::Keycode> X11Keymap::modifierKey(quint64 wanted) const {
    for (const auto& flag : flags_) {
        if (flag.flag == wanted) return flag.key;
    }
    return std::nullopt;
}

}  // namespace veltrin
