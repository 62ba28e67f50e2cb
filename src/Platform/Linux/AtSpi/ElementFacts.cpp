#include "Platform/Linux/AtSpi/ElementFacts.h"

#include <algorithm>
#include <iterator>

namespace veltrin::AtSpi {
namespace {

struct RoleName {
    Role role;
    const char* name;
    const char* subrole = "";
};

constexpr char textField[] = "AXTextField";
constexpr char textArea[] = "AXTextArea";

// A text whose state says that it has one line or many is named by that, whatever stands here.
constexpr RoleName roleNames[] = {
    {Role::text, textField},
    {Role::entry, textField},
    {Role::passwordText, "AXSecureTextField", "AXSecureTextField"},
    {Role::paragraph, textArea},
    {Role::section, textArea},
    {Role::terminal, textArea},
    {Role::editBar, textField},
    {Role::autocomplete, "AXComboBox"},
    {Role::comboBox, "AXComboBox"},
    {Role::spinButton, textField},
    {Role::documentText, textArea},
    {Role::documentEmail, textArea},
    {Role::documentFrame, textArea},
    {Role::documentWeb, "AXWebArea"},
    {Role::comment, textArea},
    {Role::blockQuote, textArea},
    {Role::article, textArea},
    {Role::heading, "AXHeading"},
    {Role::link, "AXLink"},
    {Role::label, "AXStaticText"},
    {Role::staticText, "AXStaticText"},
    {Role::frame, "AXWindow", "AXStandardWindow"},
    {Role::window, "AXWindow", "AXStandardWindow"},
    {Role::dialog, "AXWindow", "AXDialog"},
    {Role::alert, "AXWindow", "AXDialog"},
    {Role::application, "AXApplication"},
    {Role::pushButton, "AXButton"},
    {Role::toggleButton, "AXCheckBox", "AXToggle"},
    {Role::checkBox, "AXCheckBox"},
    {Role::radioButton, "AXRadioButton"},
    {Role::slider, "AXSlider"},
    {Role::progressBar, "AXProgressIndicator"},
    {Role::scrollBar, "AXScrollBar"},
    {Role::scrollPane, "AXScrollArea"},
    {Role::splitPane, "AXSplitGroup"},
    {Role::panel, "AXGroup"},
    {Role::list, "AXList"},
    {Role::listBox, "AXList"},
    {Role::listItem, "AXGroup"},
    {Role::table, "AXTable"},
    {Role::tableCell, "AXCell"},
    {Role::tree, "AXOutline"},
    {Role::treeTable, "AXOutline"},
    {Role::toolBar, "AXToolbar"},
    {Role::pageTabList, "AXTabGroup"},
    {Role::pageTab, "AXRadioButton", "AXTabButton"},
    {Role::menu, "AXMenu"},
    {Role::popupMenu, "AXMenu"},
    {Role::menuBar, "AXMenuBar"},
    {Role::menuItem, "AXMenuItem"},
    {Role::image, "AXImage"},
    {Role::icon, "AXImage"},
};

const RoleName* find(Role role) {
    const auto* found = std::find_if(std::begin(roleNames), std::end(roleNames),
                                     [role](const RoleName& entry) { return entry.role == role; });
    return found == std::end(roleNames) ? nullptr : found;
}

}  // namespace

bool ElementFacts::isEditable() const {
    // A terminal takes typing whatever its toolkit says of its text.
    return isTerminal() || (states.has(State::editable) && !states.has(State::readOnly));
}

bool ElementFacts::canWriteText() const {
    // Gecko says yes to every write and does nothing.
    return states.has(State::editable) && !states.has(State::readOnly) && hasText && hasEditableText &&
           !isPassword() && !isTerminal() && toolkit != Toolkit::gecko;
}

bool ElementFacts::canSetSelection() const {
    // Of Qt's two families, Quick alone does not offer EditableText; setting its selection has no effect.
    const bool isQuick = toolkit == Toolkit::qt && !hasEditableText;
    return hasText && !isPassword() && !isTerminal() && !isQuick;
}

AXResult<ElementFacts> factsOf(const ObjectAddress& object, ApplicationDirectory& directory,
                               Conversation& conversation) {
    Pending role = conversation.call(object, Name::accessible, "GetRole");
    Pending states = conversation.call(object, Name::accessible, "GetState");
    Pending interfaces = conversation.call(object, Name::accessible, "GetInterfaces");
    const Reply roleReply = conversation.reply(std::move(role));
    if (!roleReply.ok()) return roleReply.error;
    const Reply stateReply = conversation.reply(std::move(states));
    if (!stateReply.ok()) return stateReply.error;
    const Reply interfaceReply = conversation.reply(std::move(interfaces));
    if (!interfaceReply.ok()) return interfaceReply.error;

    ElementFacts facts;
    facts.role = static_cast<Role>(roleReply.number());
    facts.states = stateReply.states();
    if (facts.states.has(State::defunct)) return AXError::invalidUIElement;
    const QStringList offered = interfaceReply.texts();
    facts.hasText = offered.contains(QLatin1String(Name::text));
    facts.hasEditableText = offered.contains(QLatin1String(Name::editableText));
    facts.toolkit = directory.toolkitOf(object.bus, conversation);
    if (conversation.hasGivenUp()) return AXError::cannotComplete;
    return facts;
}

QString roleName(Role role, StateSet states) {
    const RoleName* entry = find(role);
    if (!entry) return QStringLiteral("AXUnknown");
    const bool isText = entry->name == textField || entry->name == textArea;
    if (isText && states.has(State::multiLine)) return QLatin1String(textArea);
    // Qt says of its one-line fields only that they have not many.
    if (isText && (states.has(State::singleLine) || role == Role::text)) return QLatin1String(textField);
    return QLatin1String(entry->name);
}

QString subroleName(Role role) {
    const RoleName* entry = find(role);
    return entry ? QLatin1String(entry->subrole) : QString();
}

}  // namespace veltrin::AtSpi
