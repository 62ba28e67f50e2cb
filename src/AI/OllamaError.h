#pragma once

#include "Foundation/Error.h"

#include <utility>

namespace veltrin {

/// What a model service did wrong, in the user's words. The name is historical: it is the error of every
/// service.
class OllamaError : public Error {
public:
    enum class Kind {
        badStatusCode,
        missingAPIKey,
        badStatus,
        invalidResponse,
        unusableTranslation,
        metaInstructionLeak,
    };

    static OllamaError badStatusCode(int code, QString bodyPreview) {
        return {Kind::badStatusCode, code, std::move(bodyPreview)};
    }
    static OllamaError missingAPIKey(QString providerDisplayName) {
        return {Kind::missingAPIKey, 0, std::move(providerDisplayName)};
    }
    static OllamaError badStatus() { return {Kind::badStatus, 0, {}}; }
    static OllamaError invalidResponse() { return {Kind::invalidResponse, 0, {}}; }
    static OllamaError unusableTranslation() { return {Kind::unusableTranslation, 0, {}}; }
    static OllamaError metaInstructionLeak() { return {Kind::metaInstructionLeak, 0, {}}; }

    Kind kind() const { return kind_; }
    /// The HTTP status of `badStatusCode`; -1 when the answer was no HTTP answer.
    int code() const { return code_; }
    /// The body preview of `badStatusCode`, or the provider's display name of `missingAPIKey`.
    const QString& detail() const { return detail_; }
    QString errorDescription() const override;

private:
    OllamaError(Kind kind, int code, QString detail) : kind_(kind), code_(code), detail_(std::move(detail)) {}

    Kind kind_;
    int code_;
    QString detail_;
};

}  // namespace veltrin
