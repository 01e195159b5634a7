#pragma once

#include <string>

namespace vendril {

/// A self-signed certificate for 127.0.0.1, made anew and removed with the object.
struct TestCertificate {
  /// It is valid for this number of days from now on; it has expired when the number is negative.
  explicit TestCertificate(int days = 1);
  TestCertificate(const TestCertificate&) = delete;
  TestCertificate& operator=(const TestCertificate&) = delete;
  ~TestCertificate();

  std::string certificateFile() const { return directory + "/certificate.pem"; }
  std::string keyFile() const { return directory + "/key.pem"; }

  std::string directory;
};

}  // namespace vendril
