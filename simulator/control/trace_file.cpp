#include "simulator/control/trace_file.hpp"

#include "vantu/orvanta/common/format.hpp"

#include <cerrno>
#include <cstdio>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace vantu::orvanta::simulator {

trace_file::trace_file(std::string path, std::function<void(std::string_view line)> told)
    : path_(std::move(path)), told_(std::move(told)) {
    if (path_ == "-") {
        path_ = "standard output";
        return;
    }
    own_.reset(std::fopen(path_.c_str(), "w"));
    if (own_ == nullptr) {
        throw std::runtime_error(
            formatted("cannot write {}: {}", path_, std::generic_category().message(errno)));
    }
}

void trace_file::write(std::string_view line) {
    if (failed_) {
        return;
    }
    const std::string text = std::string(line) + '\n';
    std::FILE* const file = own_ ? own_.get() : stdout;
    if (std::fwrite(text.data(), 1, text.size(), file) != text.size() || std::fflush(file) != 0) {
        failed_ = true;
        told_(formatted("cannot write {}: {}; the trace ends here", path_,
                        std::generic_category().message(errno)));
    }
}

} // namespace vantu::orvanta::simulator
