#include <libdewarp_vemo/error.h>

#include <libdewarp_vemo/log.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <sstream>

namespace vemo {
namespace libdewarp {

namespace {

const char* const UnknownSymbol = "<UNKNOWN SYMBOL>";

// Linux errno names for 1 .. 129. Null marks a value without an entry (aliases and unused numbers
// among them); 95 carries the POSIX name ENOTSUP and 113 an empty name.
const char* const SymbolTable[] = {
    nullptr,           "EPERM",          "ENOENT",       "ESRCH",           "EINTR",
    "EIO",             "ENXIO",          "E2BIG",        "ENOEXEC",         "EBADF",
    "ECHILD",          "EAGAIN",         "ENOMEM",       "EACCES",          "EFAULT",       // 10
    "ENOTBLK",         "EBUSY",          "EEXIST",       "EXDEV",           "ENODEV",
    "ENOTDIR",         "EISDIR",         "EINVAL",       "ENFILE",          "EMFILE",       // 20
    "ENOTTY",          "ETXTBSY",        "EFBIG",        "ENOSPC",          "ESPIPE",
    "EROFS",           "EMLINK",         "EPIPE",        "EDOM",            "ERANGE",       // 30
    "EDEADLK",         "ENAMETOOLONG",   "ENOLCK",       "ENOSYS",          "ENOTEMPTY",
    "ELOOP",           nullptr,          "ENOMSG",       "EIDRM",           "ECHRNG",       // 40
    "EL2NSYNC",        "EL3HLT",         nullptr,        nullptr,           "EUNATCH",
    nullptr,           "EL2HLT",         "EBADE",        "EBADR",           "EXFULL",       // 50
    nullptr,           "EBADRQC",        "EBADSLT",      nullptr,           nullptr,
    "ENOSTR",          "ENODATA",        "ETIME",        "ENOSR",           "ENONET",       // 60
    "ENOPKG",          "EREMOTE",        "ENOLINK",      nullptr,           nullptr,
    "ECOMM",           "EPROTO",         "EMULTIHOP",    nullptr,           "EBADMSG",      // 70
    "EOVERFLOW",       "ENOTUNIQ",       "EBADFD",       "EREMCHG",         "ELIBACC",
    "ELIBBAD",         "ELIBSCN",        "ELIBMAX",      "ELIBEXEC",        "EILSEQ",       // 80
    "ERESTART",        "ESTRPIPE",       "EUSERS",       "ENOTSOCK",        "EDESTADDRREQ",
    "EMSGSIZE",        "EPROTOTYPE",     "ENOPROTOOPT",  "EPROTONOSUPPORT", "ESOCKTNOSUPPORT",  // 90
    "ENOTSUP",         "EPFNOSUPPORT",   "EAFNOSUPPORT", "EADDRINUSE",      "EADDRNOTAVAIL",
    "ENETDOWN",        "ENETUNREACH",    "ENETRESET",    "ECONNABORTED",    "ECONNRESET",   // 100
    "ENOBUFS",         "EISCONN",        "ENOTCONN",     "ESHUTDOWN",       nullptr,
    "ETIMEDOUT",       "ECONNREFUSED",   "EHOSTDOWN",    "",                "EALREADY",     // 110
    "EINPROGRESS",     "ESTALE",         "EUCLEAN",      nullptr,           nullptr,
    "EISNAM",          "EREMOTEIO",      "EDQUOT",       "ENOMEDIUM",       "EMEDIUMTYPE",  // 120
    "ECANCELED",       "ENOKEY",         "EKEYEXPIRED",  "EKEYREVOKED",     "EKEYREJECTED",  // 125
};

const int SymbolCount = static_cast<int>(sizeof(SymbolTable) / sizeof(SymbolTable[0]));
static_assert(sizeof(SymbolTable) / sizeof(SymbolTable[0]) == 130, "errno names for 0 .. 129");

// Prints format and arguments into a buffer of 256 bytes, grown to the reported length plus one
// until the text fits. A failed allocation (or an encoding error) gives the empty text.
std::string Expand(const char* format, va_list arguments) {
  if (!format) {
    return std::string();
  }
  size_t size = 256;
  for (;;) {
    char* buffer = static_cast<char*>(std::malloc(size));
    if (!buffer) {
      return std::string();
    }
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(buffer, size, format, copy);
    va_end(copy);
    if (length < 0) {
      std::free(buffer);
      return std::string();
    }
    if (static_cast<size_t>(length) < size) {
      std::string text(buffer, static_cast<size_t>(length));
      std::free(buffer);
      return text;
    }
    std::free(buffer);
    size = static_cast<size_t>(length) + 1;
  }
}

std::string LocationText(const CodeLocation& location) {
  std::ostringstream stream;
  stream << location;
  return stream.str();
}

}  // namespace

Error::Error(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  m_szMessage = FormatMessage(format, arguments);
  va_end(arguments);
}

Error::Error(int code, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  m_szMessage = FormatMessage(code, format, arguments);
  va_end(arguments);
}

Error::Error(const CodeLocation& location, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  m_szMessage = FormatMessage(location, format, arguments);
  va_end(arguments);
}

Error::Error(const CodeLocation& location, int code) : m_szMessage(FormatMessage(location, code)) {}

Error::Error(const CodeLocation& location, int code, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  m_szMessage = FormatMessage(location, code, format, arguments);
  va_end(arguments);
}

Error::Error(const Error& other) : std::exception(other), m_szMessage(other.m_szMessage) {}

Error& Error::operator=(const Error& other) {
  if (this == &other) {
    DEWARP_LOG_WARN("Self assignment of %s object\n", "Error");
    return *this;
  }
  std::exception::operator=(other);
  m_szMessage = other.m_szMessage;
  return *this;
}

Error::~Error() noexcept {}

const char* Error::what() const noexcept { return m_szMessage.c_str(); }

std::string Error::Description(int code) const { return DescriptionOf(code); }

std::string Error::Symbol(int code) const { return SymbolOf(code); }

void Error::SetLastError(int code) { errno = code; }

std::string Error::SymbolOf(int code) {
  if (code <= 0 || code >= SymbolCount || !SymbolTable[code]) {
    return UnknownSymbol;
  }
  return SymbolTable[code];
}

std::string Error::DescriptionOf(int) { return std::string(); }

std::string Error::FormatError(int code) {
  const std::string symbol = SymbolOf(code);
  const std::string description = DescriptionOf(code);
  const std::string number = std::to_string(code);
  if (!symbol.empty()) {
    std::string text = "Error " + symbol + " (" + number + ")";
    if (!description.empty()) {
      text += " " + description;
    }
    return text;
  }
  if (!description.empty()) {
    return "Error (" + number + ") " + description;
  }
  return std::string();
}

std::string Error::FormatMessage(const char* format, va_list arguments) { return Expand(format, arguments); }

std::string Error::FormatMessage(int code, const char* format, va_list arguments) {
  return "[" + FormatError(code) + "] - " + Expand(format, arguments);
}

std::string Error::FormatMessage(const CodeLocation& location, const char* format, va_list arguments) {
  return "(" + LocationText(location) + ") - " + Expand(format, arguments);
}

std::string Error::FormatMessage(const CodeLocation& location, int code) {
  return "(" + LocationText(location) + ") [" + FormatError(code) + "]";
}

std::string Error::FormatMessage(const CodeLocation& location, int code, const char* format,
                                 va_list arguments) {
  return "(" + LocationText(location) + ") [" + FormatError(code) + "] - " + Expand(format, arguments);
}

std::ostream& operator<<(std::ostream& stream, const Error& error) { return stream << error.what(); }

}  // namespace libdewarp
}  // namespace vemo
