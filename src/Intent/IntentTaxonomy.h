#pragma once

#include "Foundation/RawValues.h"

#include <QString>

#include <optional>

/// The vocabulary in which an intent is stated. Everything downstream (prompt, contract, log) reads an
/// ActionSpec and never derives the intent again from the gesture.
namespace veltrin {

enum class ActionOperation {
    semanticExpansion,
    visualPromptRefinement,
    writingRefinement,
    taskInstructionClarification,
    structureOrganization,
    translate,
    reply,
    explain,
    extract,
    agentTransform,
};
template <>
inline constexpr auto rawValuesOf<ActionOperation> = std::to_array<const char*>(
    {"semanticExpansion", "visualPromptRefinement", "writingRefinement", "taskInstructionClarification",
     "structureOrganization", "translate", "reply", "explain", "extract", "agentTransform"});

enum class IntentInputKind {
    conceptPhrase,
    visualPrompt,
    writingDraft,
    chatMessage,
    knowledgeText,
    structuredText,
    codeOrError,
    commandRequest,
    fileDocument,
    image,
    voiceTranscript,
    unknown,
};
template <>
inline constexpr auto rawValuesOf<IntentInputKind> = std::to_array<const char*>(
    {"conceptPhrase", "visualPrompt", "writingDraft", "chatMessage", "knowledgeText", "structuredText",
     "codeOrError", "commandRequest", "fileDocument", "image", "voiceTranscript", "unknown"});

enum class IntentDomain {
    visualDesign,
    writing,
    chat,
    translation,
    code,
    knowledge,
    business,
    personal,
    unknown,
};
template <>
inline constexpr auto rawValuesOf<IntentDomain> =
    std::to_array<const char*>({"visualDesign", "writing", "chat", "translation", "code", "knowledge",
                                "business", "personal", "unknown"});

enum class OptimizationStrategy {
    expressionStandards,
    plainRewrite,
    structureExtraction,
    exactTransform,
    languageTransfer,
    replyGeneration,
    multimodalUnderstanding,
    promptReverseEngineering,
    voiceDictation,
    voicePromptStructuring,
    voiceNoteStructuring,
};
template <>
inline constexpr auto rawValuesOf<OptimizationStrategy> = std::to_array<const char*>(
    {"expressionStandards", "plainRewrite", "structureExtraction", "exactTransform", "languageTransfer",
     "replyGeneration", "multimodalUnderstanding", "promptReverseEngineering", "voiceDictation",
     "voicePromptStructuring", "voiceNoteStructuring"});

enum class OutputContractKind {
    plainTextTransform,
    semanticExpansion,
    translation,
    replyDraft,
    analysis,
    promptSource,
};
template <>
inline constexpr auto rawValuesOf<OutputContractKind> = std::to_array<const char*>(
    {"plainTextTransform", "semanticExpansion", "translation", "replyDraft", "analysis", "promptSource"});

enum class OptimizeCompileMode { refine, restructure, modelAdapt, outputFormat };
template <>
inline constexpr auto rawValuesOf<OptimizeCompileMode> =
    std::to_array<const char*>({"refine", "restructure", "modelAdapt", "outputFormat"});

enum class SmartSelectCompileMode { reply, organize };
template <>
inline constexpr auto rawValuesOf<SmartSelectCompileMode> = std::to_array<const char*>({"reply", "organize"});

/// Which producer made a ContextDocument. Nothing reads it yet.
enum class ContextOrigin : quint8 { externalText = 0, composed = 4 };

/// The text under work and where it came from.
struct ContextDocument {
    ContextOrigin origin = ContextOrigin::externalText;
    quint8 originDetail = 0;
    QString fullText;       ///< the whole text as read
    QString text;           ///< the piece to be processed: rules, prompt and length budget use this
    QString contextBefore;  ///< budgeted text before it; empty for voice and drag
    QString contextAfter;
    std::optional<QString> appName;
    std::optional<QString> bundleIdentifier;
};

struct PreservationPolicy {
    bool preserveIntent = true;
    bool preserveSubject = true;
    bool preserveFacts = true;
    bool preserveStructure = false;
    bool allowNewFacts = false;
    bool allowSubjectInvention = false;
    bool allowExpansion = false;
    friend bool operator==(const PreservationPolicy&, const PreservationPolicy&) = default;
};

/// The typed statement of one intent.
struct ActionSpec {
    ActionOperation operation = ActionOperation::writingRefinement;
    IntentInputKind inputKind = IntentInputKind::unknown;
    IntentDomain domain = IntentDomain::unknown;
    OptimizationStrategy strategy = OptimizationStrategy::plainRewrite;
    PreservationPolicy preservation;
    OutputContractKind outputContract = OutputContractKind::plainTextTransform;
    std::optional<QString> targetLanguage;  ///< a language code, only for translation
    friend bool operator==(const ActionSpec&, const ActionSpec&) = default;
};

}  // namespace veltrin
