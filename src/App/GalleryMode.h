#pragma once

class QCommandLineParser;

/// The developer mode: a page that shows every element of the interface, instead of the program.
namespace veltrin::GalleryMode {

void addOptions(QCommandLineParser& parser);
bool isWanted(const QCommandLineParser& parser);
/// Shows the page, or writes a picture of it; the exit code.
int run(const QCommandLineParser& parser);

}  // namespace veltrin::GalleryMode
