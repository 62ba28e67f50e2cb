#include "ExternalAccess/ExternalTextReadResult.h"

#include "Foundation/Characters.h"
#include "Foundation/Text.h"

namespace veltrin {

bool ExternalTextReadResult::hasText() const {
    return !Text::isBlank(text);
}

QString ExternalTextReadResult::actionSourceLine() const {
    if (!hasText()) return QStringLiteral("No readable external text");
    return QStringLiteral("%1 · %2 chars").arg(rawValue(source)).arg(Characters::count(text));
}

}  // namespace veltrin
