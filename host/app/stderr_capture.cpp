#include "app/stderr_capture.h"

#include <unistd.h>

#include <array>

namespace vornel::app {

StderrCapture::StderrCapture() {
    std::fflush(stderr);
    file_ = std::tmpfile();
    if (file_ == nullptr) {
        return;
    }
    real_ = ::dup(STDERR_FILENO);
    if (real_ >= 0) {
        ::dup2(::fileno(file_), STDERR_FILENO);
    }
}

StderrCapture::~StderrCapture() {
    Stop();
}

std::string StderrCapture::Stop() {
    std::string text;
    if (real_ >= 0) {
        std::fflush(stderr);
        ::dup2(real_, STDERR_FILENO);
        ::close(real_);
        real_ = -1;
        std::rewind(file_);
        std::array<char, 4096> buffer{};
        std::size_t count = 0;
        while ((count = std::fread(buffer.data(), 1, buffer.size(), file_)) > 0) {
            text.append(buffer.data(), count);
        }
    }
    if (file_ != nullptr) {
        std::fclose(file_);
        file_ = nullptr;
    }
    return text;
}

}  // namespace vornel::app
