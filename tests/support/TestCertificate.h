#pragma once

#include <string>

namespace vendril {

/// A self-signed certificate for 127.0.0.1, made anew and removed with the object.
struct TestCertificate {
  TestCertificate();
  TestCertificate(const TestCertificate&) = delete;
  TestCertificate& operator=(const TestCertificate&) = delete;
  ~TestCertificate();

  std::string certificateFile() const { return directory + "/certificate.pem"; }
  std::string keyFile() const { return directory + "/key.pem"; }

  std::string directory;
};

}  // namespace vendril
