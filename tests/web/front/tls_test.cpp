// SPDX-License-Identifier: Apache-2.0
// Encrypted connections, with a certificate made for the moment by the command openssl, and libcurl for a client.
#include <curl/curl.h>

#include <fstream>

#include "tests/web/front/front_world.h"

#include <tests/support/child_process.h>

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

std::size_t Append(char* bytes, std::size_t size, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, size * count);
  return size * count;
}

class FrontTls : public FrontWorld {
 protected:
  void SetUp() override {
    if (!MakeCertificate("a") || !MakeCertificate("b")) GTEST_SKIP() << "there is no command openssl";
    m_options.certificate = m_folder.File("a.pem");
    m_options.key = m_folder.File("a.key");
  }
  bool MakeCertificate(const std::string& name) {
    cChildProcess openssl(
        {"/usr/bin/openssl", "req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
         "-keyout", m_folder.File(name + ".key"), "-out", m_folder.File(name + ".pem"), "-days", "2", "-subj",
         "/CN=gateway", "-addext", "subjectAltName=IP:127.0.0.1"},
        {}, m_folder.File("openssl"));
    return openssl.Wait() == 0;
  }
  std::string StartError() {
    Stop();
    m_host = std::make_unique<cServiceHost>("tav-gateway", m_folder.GetPath(), m_clock);
    m_front = std::make_unique<cWebFront>(m_host.get(), m_options);
    std::string error;
    EXPECT_EQ(m_front->Start(error), cWebFront::eOutcome::BadOption);
    return error;
  }
};

}  // namespace

TEST_F(FrontTls, ServesPages) {
  Start();
  EXPECT_THAT(m_front->GetUrl(), testing::StartsWith("https://127.0.0.1:"));
  cTestPages& pages = AddPages();
  const std::string body(300'000, 'x');
  pages.onRequest = [&](const vorn::cMsg& request) { pages.Serve(request, kHtml, body); };
  CURLM* const multi = curl_multi_init();
  CURL* const easy = curl_easy_init();
  std::string header, received;
  curl_easy_setopt(easy, CURLOPT_URL, m_front->GetUrl().c_str());
  curl_easy_setopt(easy, CURLOPT_CAINFO, m_options.certificate.c_str());
  curl_easy_setopt(easy, CURLOPT_NOPROXY, "*");
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, Append);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &received);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, &header);
  curl_multi_add_handle(multi, easy);
  int running = 1;
  EXPECT_TRUE(Await([&] {
    curl_multi_perform(multi, &running);
    return running == 0;
  }));
  EXPECT_TRUE(received == body) << received.size();
  EXPECT_THAT(header, HasSubstr("Strict-Transport-Security: max-age="));
  ASSERT_FALSE(pages.requests.empty());
  EXPECT_EQ(pages.requests[0].Record().GetTextPar("Request-Scheme"), "https");
  curl_multi_remove_handle(multi, easy);
  curl_easy_cleanup(easy);
  curl_multi_cleanup(multi);
}

TEST_F(FrontTls, AClientThatSpeaksPlainTextIsClosed) {
  Start();
  cWebClient& client = Connect();
  client.Send(Get("/"));
  EXPECT_TRUE(Await([&] { return client.IsClosed(); }));
  cWebClient& silent = Connect();
  Settle();
  Pass(22'000);
  EXPECT_TRUE(Await([&] { return silent.IsClosed(); }));
}

TEST_F(FrontTls, AKeyOfAnotherCertificateIsAnErrorThatNamesBoth) {
  m_options.key = m_folder.File("b.key");
  EXPECT_THAT(StartError(), testing::AllOf(HasSubstr("a.pem'"), HasSubstr("b.key'")));
}

TEST_F(FrontTls, WhatIsNoCertificateIsAnError) {
  std::ofstream(m_folder.File("no.pem")) << "no certificate";
  m_options.certificate = m_folder.File("no.pem");
  EXPECT_THAT(StartError(), HasSubstr("no.pem'"));
  m_options.certificate = "/nowhere.pem";
  EXPECT_THAT(StartError(), HasSubstr("file '/nowhere.pem' cannot be read"));
  m_options.certificate.clear();
  EXPECT_THAT(StartError(), HasSubstr("certificate"));
}

}  // namespace tav::gateway::web
