#pragma once

#include "Platform/Linux/X11/X11SelectionServer.h"
#include "Platform/Pasteboard.h"

namespace veltrin {

class X11SelectionReader;

/// How the targets of a selection are told from each other, and the way between what stands in a snapshot and
/// what is offered.
namespace SelectionTypes {

/// The mark of a secret, with the content "secret".
inline constexpr char secretHint[] = "x-kde-passwordManagerHint";

/// Plain text, in the order in which it is asked for.
const QStringList& plainText();
/// Describes the selection or acts on it, instead of giving its content.
bool isMeta(const QString& type);
/// Lower is fetched earlier: plain text, which must come back, before pictures in many formats, which an
/// owner makes only when asked.
int rank(const QString& type);

/// The plain text of `bytes` in that form, type and format as in PasteboardData.
QString textOf(const PasteboardData& data);
QString formOf(const QString& type, int format);

/// What to offer so that the snapshot stands again.
X11SelectionServer::Offer offerOf(const PasteboardSnapshot& snapshot, const X11SelectionReader& atoms);
/// The snapshot of what we offer ourselves.
PasteboardSnapshot snapshotOf(const X11SelectionServer::Offer& offer, const X11SelectionReader& atoms);

}  // namespace SelectionTypes
}  // namespace veltrin
