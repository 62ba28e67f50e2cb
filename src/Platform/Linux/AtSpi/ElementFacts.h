#pragma once

#include "Platform/Linux/AtSpi/ApplicationDirectory.h"

namespace veltrin::AtSpi {

/// What decides how an object may be read and written.
struct ElementFacts {
    Role role = Role::invalid;
    StateSet states;
    bool hasText = false;
    bool hasEditableText = false;
    Toolkit toolkit = Toolkit::other;

    bool isPassword() const { return role == Role::passwordText; }
    bool isTerminal() const { return role == Role::terminal; }
    /// The user can type here.
    bool isEditable() const;
    /// The text can be replaced through accessibility.
    bool canWriteText() const;
    /// The selection and the caret can be moved through accessibility.
    bool canSetSelection() const;
};

/// Asks an object for its facts, in one round trip once its toolkit is known.
AXResult<ElementFacts> factsOf(const ObjectAddress& object, ApplicationDirectory& directory,
                               Conversation& conversation);

/// The role's name in the vocabulary of the port, as "AXTextArea"; "AXUnknown" for roles without one.
QString roleName(Role role, StateSet states);
/// Likewise; empty when the role has none.
QString subroleName(Role role);

}  // namespace veltrin::AtSpi
