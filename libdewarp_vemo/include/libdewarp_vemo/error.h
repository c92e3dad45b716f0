// The engine's exception: a standard exception carrying one formatted message, optionally prefixed
// by the code location of the report and the errno-style code.
#pragma once

#include <libdewarp_vemo/code_location.h>

#include <cstdarg>
#include <exception>
#include <ostream>
#include <string>
#include <type_traits>

#define DEWARP_PRINTF_FORMAT(format_index, first_argument) \
  __attribute__((format(__printf__, format_index, first_argument)))

namespace vemo {
namespace libdewarp {

class Error : public std::exception {
  // Selects the argument-list constructors for a va_list object only: a local va_list, or a
  // function parameter of type va_list (adjusted to a pointer on x86-64, where va_list is an array
  // of one element).
  template <class List>
  struct IsVaList : std::is_same<List, va_list> {};
  template <class Element>
  struct IsVaList<Element*>
      : std::integral_constant<bool, std::is_same<Element*, va_list>::value || std::is_same<Element[1], va_list>::value> {};
  template <class List>
  using VaListOnly = typename std::enable_if<IsVaList<List>::value>::type;

public:
  // Message shapes (M the printf expansion, L the location, E FormatError(code)):
  //   format            -> M
  //   code, format      -> "[E] - M"
  //   location, format  -> "(L) - M"
  //   location, code    -> "(L) [E]"
  //   location, code, format -> "(L) [E] - M"
  //
  // The constructors taking an argument list accept only a named va_list. On i386 va_list is a
  // plain char pointer, so a string literal, a char array or a temporary pointer given as the first
  // printf argument would otherwise pick them instead of the variadic constructors; a named
  // non-const char pointer still would, so text arguments are passed as const char*.
  template <class List, class = VaListOnly<List>>
  Error(const char* format, List& arguments) : m_szMessage(FormatMessage(format, arguments)) {}
  Error(const char* format, ...) DEWARP_PRINTF_FORMAT(2, 3);
  template <class List, class = VaListOnly<List>>
  Error(int code, const char* format, List& arguments) : m_szMessage(FormatMessage(code, format, arguments)) {}
  Error(int code, const char* format, ...) DEWARP_PRINTF_FORMAT(3, 4);
  template <class List, class = VaListOnly<List>>
  Error(const CodeLocation& location, const char* format, List& arguments)
      : m_szMessage(FormatMessage(location, format, arguments)) {}
  Error(const CodeLocation& location, const char* format, ...) DEWARP_PRINTF_FORMAT(3, 4);
  Error(const CodeLocation& location, int code);
  template <class List, class = VaListOnly<List>>
  Error(const CodeLocation& location, int code, const char* format, List& arguments)
      : m_szMessage(FormatMessage(location, code, format, arguments)) {}
  Error(const CodeLocation& location, int code, const char* format, ...) DEWARP_PRINTF_FORMAT(4, 5);
  Error(const Error& other);
  Error& operator=(const Error& other);
  virtual ~Error() noexcept;

  virtual const char* what() const noexcept;
  // Text description of an errno value; empty in this version (there is no text table).
  virtual std::string Description(int code) const;
  // Symbolic name of an errno value ("EINVAL" for 22), "<UNKNOWN SYMBOL>" where there is none.
  virtual std::string Symbol(int code) const;

  // Stores the code in the calling thread's errno. Every throw site calls it with the code it throws.
  static void SetLastError(int code);
  // "Error S (code)" [" D"], "Error (code) D", or "" from the symbol S and description D of code.
  static std::string FormatError(int code);
  // The table behind Symbol and Description, usable without an Error object.
  static std::string SymbolOf(int code);
  static std::string DescriptionOf(int code);

private:
  static std::string FormatMessage(const char* format, va_list arguments);
  static std::string FormatMessage(int code, const char* format, va_list arguments);
  static std::string FormatMessage(const CodeLocation& location, const char* format, va_list arguments);
  static std::string FormatMessage(const CodeLocation& location, int code);
  static std::string FormatMessage(const CodeLocation& location, int code, const char* format,
                                   va_list arguments);

  std::string m_szMessage;
};

// Writes what().
std::ostream& operator<<(std::ostream& stream, const Error& error);

}  // namespace libdewarp
}  // namespace vemo
