// SPDX-License-Identifier: Apache-2.0
// cServiceLink: asks one service questions, one at a time, and waits for the answers.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include <tav/framework/scm_service_io.h>
#include <tav/protocol.h>
#include <tavctl/context.h>

namespace tav::ctl {

// Waits until a client is connected to its service. A cFailure says why it is not.
void AwaitConnection(cContext& context, const vorn::cScmServiceIO& client);

class cServiceLink final : public vorn::cScmServiceIO {
 public:
  // To the service of the protocol. Throws a cFailure when it cannot be reached.
  cServiceLink(cContext& context, const cProtocol& protocol);

  // The answer to a request of the protocol that has one. A cFailure: it was refused, and why; or there was none. Where
  // answer and refusal have one number, a "reason" tells them apart.
  vorn::cRecord Ask(unsigned int type, const vorn::cRecord& request);
  // Called with everything that is no answer.
  void SetListener(std::function<void(const vorn::cMsg&)> listener) { m_listener = std::move(listener); }

  void OnClose() override;
  bool DispatchMessage(const vorn::cMsg& msg) override;

 private:
  void SendQuestion(unsigned int type, const vorn::cRecord& request);
  void AwaitAnswer(const std::string& question);
  std::string Describe(const std::string& what) const;

  cContext& m_context;
  const cProtocol& m_protocol;
  std::function<void(const vorn::cMsg&)> m_listener;
  vorn::cUuid m_question;
  std::optional<vorn::cMsg> m_answer;
  bool m_lost = false;  // since the question was asked
};

}  // namespace tav::ctl
