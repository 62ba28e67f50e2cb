#pragma once

#include <QJsonObject>
#include <QString>
#include <QThread>

#include <memory>

namespace veltrin {

/// Serves one page with a textarea, an input and an editable element to a browser, and talks with the page's
/// script: the test asks, the page answers, past everything that is under test. On loopback, from a thread of
/// its own.
class PageServer {
public:
    PageServer();
    ~PageServer();
    PageServer(const PageServer&) = delete;
    PageServer& operator=(const PageServer&) = delete;

    QString url() const;
    /// Waits for a page that listens, and for its answer. Throws std::runtime_error when there is none in
    /// time.
    QJsonObject ask(QJsonObject question, double seconds = 20);

private:
    class Worker;
    QThread thread_;
    std::unique_ptr<Worker> worker_;
    int lastId_ = 0;
};

}  // namespace veltrin
