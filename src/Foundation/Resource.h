#pragma once

#include "Foundation/Json.h"

#include <QString>

/// Content that is compiled into the program from the folder `resources/`; a path is relative to that folder.
/// A file that is missing or broken is an error of the build and ends the program.
namespace veltrin::Resource {

/// The file's text without the line feed that ends its last line.
QString text(const QString& path);

/// The file's JSON value.
Json json(const QString& path);

}  // namespace veltrin::Resource
