#include <libdewarp_vemo/bad_exception_handler.h>

#include <libdewarp_vemo/log.h>

#include <cstdlib>
#include <string>

namespace vemo {
namespace libdewarp {

// The engine's functions admit only std::exception and std::bad_exception. C++17 has no dynamic
// exception specification and no unexpected handler any more, so the barrier is made of two pieces:
// Invoke turns a foreign exception into the ladder line and std::bad_exception, and the handler
// object keeps the process-wide hook that remains (the terminate handler) pointing at a handler
// that logs the ladder line before the process ends, putting the previous one back afterwards.
BadExceptionHandler::BadExceptionHandler() : m_pfnOldHandler(std::set_terminate(&TerminateHandler)) {}

BadExceptionHandler::~BadExceptionHandler() { std::set_terminate(m_pfnOldHandler); }

void BadExceptionHandler::UnexpectedHandler() {
  LogUnexpected();
  throw std::bad_exception();
}

void BadExceptionHandler::TerminateHandler() {
  LogUnexpected();
  std::abort();
}

// Rethrows the current exception inside a ladder of handlers and logs the first matching line.
void BadExceptionHandler::LogUnexpected() noexcept {
  if (!std::current_exception()) {
    // Nothing is being handled: rethrowing would end the process.
    DEWARP_LOG_ERR("Caught unexpected exception\n");
    return;
  }
  try {
    throw;
  } catch (char value) {
    DEWARP_LOG_ERR("Caught unexpected char exception - %c\n", value);
  } catch (unsigned char value) {
    DEWARP_LOG_ERR("Caught unexpected char exception - 0x%02X\n", value);
  } catch (short value) {
    DEWARP_LOG_ERR("Caught unexpected short integer exception - %d\n", value);
  } catch (unsigned short value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned short integer exception - %u\n", value);
  } catch (int value) {
    DEWARP_LOG_ERR("Caught unexpected integer exception - %d\n", value);
  } catch (unsigned int value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned integer exception - %u\n", value);
  } catch (long value) {
    DEWARP_LOG_ERR("Caught unexpected long integer exception - %ld\n", value);
  } catch (unsigned long value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned long integer exception - %lu\n", value);
  } catch (long long value) {
    DEWARP_LOG_ERR("Caught unexpected long-long integer exception - %lld\n", value);
  } catch (unsigned long long value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned long-long integer exception - %llu\n", value);
  } catch (const char* value) {
    DEWARP_LOG_ERR("Caught unexpected char pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const unsigned char* value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned char pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const short* value) {
    DEWARP_LOG_ERR("Caught unexpected short integer pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const unsigned short* value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned short integer exception - %p\n", static_cast<const void*>(value));
  } catch (const int* value) {
    DEWARP_LOG_ERR("Caught unexpected integer pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const unsigned int* value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned integer pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const long* value) {
    DEWARP_LOG_ERR("Caught unexpected long integer pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const unsigned long* value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned long integer pointer exception - %p\n",
                   static_cast<const void*>(value));
  } catch (const long long* value) {
    DEWARP_LOG_ERR("Caught unexpected long-long integer pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const unsigned long long* value) {
    DEWARP_LOG_ERR("Caught unexpected unsigned long-long integer pointer exception - %p\n",
                   static_cast<const void*>(value));
  } catch (float value) {
    DEWARP_LOG_ERR("Caught unexpected float exception - %f\n", static_cast<double>(value));
  } catch (double value) {
    DEWARP_LOG_ERR("Caught unexpected double exception - %f\n", value);
  } catch (long double value) {
    DEWARP_LOG_ERR("Caught unexpected long-double exception - %Lf\n", value);
  } catch (const float* value) {
    DEWARP_LOG_ERR("Caught unexpected float pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const double* value) {
    DEWARP_LOG_ERR("Caught unexpected double pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const long double* value) {
    DEWARP_LOG_ERR("Caught unexpected long-double pointer exception - %p\n", static_cast<const void*>(value));
  } catch (const void* value) {
    DEWARP_LOG_ERR("Caught unexpected void pointer exception - %p\n", value);
  } catch (const std::string& value) {
    DEWARP_LOG_ERR("Caught unexpected string exception - %s\n", value.c_str());
  } catch (const std::exception& value) {
    DEWARP_LOG_ERR("Caught unexpected standard exception - %s\n", value.what());
  } catch (...) {
    DEWARP_LOG_ERR("Caught unexpected exception\n");
  }
}

}  // namespace libdewarp
}  // namespace vemo
