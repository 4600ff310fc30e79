// DecimalCommaLocale.h - switches the process to a locale whose decimal
// separator is a comma for one scope, so tests can show that numbers written
// and read as text ignore the process locale.
#ifndef KI_TESTS_SUPPORT_DECIMALCOMMALOCALE_H
#define KI_TESTS_SUPPORT_DECIMALCOMMALOCALE_H

#include <clocale>
#include <string>

namespace kiTest {

class DecimalCommaLocale {
 public:
  DecimalCommaLocale() : m_previous(std::setlocale(LC_ALL, nullptr)) {
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "de_DE"}) {
      if (std::setlocale(LC_ALL, name) != nullptr) {
        m_active = true;
        break;
      }
    }
  }
  ~DecimalCommaLocale() { std::setlocale(LC_ALL, m_previous.c_str()); }
  DecimalCommaLocale(const DecimalCommaLocale&) = delete;
  DecimalCommaLocale& operator=(const DecimalCommaLocale&) = delete;

  // False when no such locale is installed: the caller skips.
  bool IsActive() const { return m_active; }

 private:
  std::string m_previous;
  bool m_active = false;
};

}  // namespace kiTest

#endif  // KI_TESTS_SUPPORT_DECIMALCOMMALOCALE_H
