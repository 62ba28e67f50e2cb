#pragma once

#include "AI/AgentProfile.h"
#include "AI/OllamaClient.h"
#include "Foundation/Lifetime.h"
#include "Foundation/Observers.h"

#include <functional>
#include <optional>
#include <vector>

namespace veltrin {

class RunLoop;

struct ChatMessage {
    bool isUser = false;
    QString text;
};

/// An agent made in a conversation: the model asks about what is wanted, then writes the agent. No failure of
/// the model is shown; the talk goes on without it. Main thread.
class AIChatCreateSheet {
public:
    /// `created` is handed the agent that the user confirms.
    AIChatCreateSheet(OllamaClient client, RunLoop& runLoop,
                      std::function<void(const AgentProfile&)> created);

    QString userInput;
    /// Sends `userInput`. Nothing happens when it is blank or while an answer is awaited.
    void sendMessage();
    /// Hands over the agent that is shown.
    void confirmCreate();
    /// Drops the agent that is shown and asks for a better one. Nothing happens while an answer is awaited.
    void continueTuning();

    const std::vector<ChatMessage>& messages() const { return messages_; }
    const std::optional<AgentProfile>& generatedAgent() const { return generatedAgent_; }
    /// True from a message to the end of everything that it sets off.
    bool isThinking() const { return isThinking_; }
    /// The user's messages so far.
    int round() const { return round_; }
    /// Whether the agent is shown, to be confirmed or tuned.
    bool showConfirm() const { return generatedAgent_.has_value() && !isThinking_; }

    /// The agent of a model's answer; the stock agent when the answer holds no object.
    static AgentProfile agentOf(const QString& answer, Date now);
    static AgentProfile fallbackAgent(Date now);

    Observers<> changed;

private:
    // Coroutines that look whether the sheet is still there after each wait.
    static QCoro::Task<void> answering(AIChatCreateSheet* sheet);
    static QCoro::Task<std::optional<QString>> asking(OllamaClient client, QString prompt, int limit,
                                                      double timeout);

    void send(const QString& text);
    QString history() const;
    QString nextPrompt() const;
    void append(bool isUser, const QString& text);
    Date now() const;

    OllamaClient client_;
    RunLoop& runLoop_;
    std::function<void(const AgentProfile&)> created_;
    std::vector<ChatMessage> messages_;
    std::optional<AgentProfile> generatedAgent_;
    bool isThinking_ = false;
    int round_ = 0;
    Lifetime lifetime_;
};

}  // namespace veltrin
