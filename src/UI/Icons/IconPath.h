#pragma once

#include <QPainterPath>
#include <QStringView>

#include <optional>

namespace veltrin::IconPath {

/// Reads a drawing in the notation of SVG's `d` attribute (all its commands but T). Nothing for a text that
/// is not one: an unknown letter, a number that is missing or no number, a drawing that does not begin with a
/// move.
std::optional<QPainterPath> parse(QStringView text);

}  // namespace veltrin::IconPath
