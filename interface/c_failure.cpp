// SPDX-License-Identifier: Apache-2.0
#include "interface/c_failure.h"

#include <algorithm>
#include <new>

#include "framequilt/error.h"

namespace framequilt {
namespace {

framequilt_code codeFor(ErrorCode code) {
  switch (code) {
    case ErrorCode::kInvalidOption:
      return FRAMEQUILT_E_OPTION;
    case ErrorCode::kSessionOpen:
      return FRAMEQUILT_E_SESSION_OPEN;
    case ErrorCode::kStartFailed:
      return FRAMEQUILT_E_START;
    case ErrorCode::kNoOpencl:
      return FRAMEQUILT_E_NO_OPENCL;
    case ErrorCode::kInvalidFrame:
      return FRAMEQUILT_E_FRAME;
    case ErrorCode::kStopped:
      return FRAMEQUILT_E_STOPPED;
    case ErrorCode::kOutOfMemory:
      return FRAMEQUILT_E_MEMORY;
    case ErrorCode::kBusy:
      return FRAMEQUILT_E_BUSY;
    case ErrorCode::kEngineFailed:
      break;
  }
  return FRAMEQUILT_E_ENGINE;
}

framequilt_code failed(ErrorText* session, framequilt_code code, const char* text) noexcept {
  errorOfThread().set(text);
  if (session != nullptr) session->set(text);
  return code;
}

}  // namespace

void ErrorText::set(std::string_view text) noexcept {
  const std::size_t length = std::min(text.size(), sizeof text_ - 1);
  std::copy_n(text.data(), length, text_);
  text_[length] = '\0';
}

ErrorText& errorOfThread() noexcept {
  thread_local ErrorText text;
  return text;
}

framequilt_code codeOfException(ErrorText* session) noexcept {
  try {
    throw;
  } catch (const CallFailure& failure) {
    return failed(session, failure.code(), failure.what());
  } catch (const Error& error) {
    return failed(session, codeFor(error.code()), error.what());
  } catch (const std::bad_alloc&) {
    return failed(session, FRAMEQUILT_E_MEMORY, "out of memory: close what is not needed");
  } catch (const std::exception& other) {
    return failed(session, FRAMEQUILT_E_ENGINE, other.what());
  } catch (...) {
    return failed(session, FRAMEQUILT_E_ENGINE, "failed for an unknown reason: report it");
  }
}

void requireGiven(const void* pointer, const char* name) {
  if (pointer != nullptr) return;
  throw CallFailure(FRAMEQUILT_E_ARGUMENT,
                    std::string(name) + " is a null pointer: give one that is not");
}

}  // namespace framequilt
