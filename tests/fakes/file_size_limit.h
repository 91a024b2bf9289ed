#pragma once
// While one lives, no file may grow past `bytes`: the kernel refuses the writes beyond, as
// a full disk does (Linux; SIGXFSZ is ignored meanwhile so the write fails instead).
#include <csignal>
#include <sys/resource.h>

namespace kdx::test {

class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &old_);
        oldHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit tight = old_;
        tight.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &tight);
    }
    ~FileSizeLimit()
    {
        setrlimit(RLIMIT_FSIZE, &old_);
        std::signal(SIGXFSZ, oldHandler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

private:
    rlimit old_{};
    void (*oldHandler_)(int) = nullptr;
};

} // namespace kdx::test
