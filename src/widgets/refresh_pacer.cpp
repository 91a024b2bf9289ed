#include "widgets/refresh_pacer.h"

namespace kdx {

RefreshPacer::RefreshPacer(QObject* owner, const char* timerName, int periodMs, std::function<void()> refresh,
                           Clock& clock)
    : timer_(new QTimer(owner)), periodNs_(int64_t{periodMs} * 1'000'000), refresh_(std::move(refresh)), clock_(clock)
{
    timer_->setObjectName(timerName);
    timer_->setSingleShot(true);
    QObject::connect(timer_, &QTimer::timeout, owner, [this] { flush(); });
}

void RefreshPacer::changed()
{
    pending_ = true;
    const int64_t now = clock_.nowNs();
    const int64_t since = lastNs_ ? now - *lastNs_ : periodNs_;
    if (since >= periodNs_) {
        refresh(now);
        return;
    }
    if (!timer_->isActive()) timer_->start(static_cast<int>((periodNs_ - since + 999'999) / 1'000'000) + GraceMs);
}

void RefreshPacer::flush()
{
    if (pending_) refresh(clock_.nowNs());
    else timer_->stop();
}

void RefreshPacer::drop()
{
    timer_->stop();
    pending_ = false;
}

void RefreshPacer::refresh(int64_t nowNs)
{
    timer_->stop();
    pending_ = false;
    lastNs_ = nowNs;
    refresh_();
}

} // namespace kdx
