#include "widgets/refresh_pacer.h"

namespace kdx {

RefreshPacer::RefreshPacer(QObject* owner, const char* timerName, int spacingMs, int maxWaitMs,
                           std::function<void()> refresh, Clock& clock)
    : timer_(new QTimer(owner)), spacingNs_(int64_t{spacingMs} * 1'000'000), refresh_(std::move(refresh)), clock_(clock)
{
    timer_->setObjectName(timerName);
    timer_->setSingleShot(true);
    timer_->setInterval(maxWaitMs);
    QObject::connect(timer_, &QTimer::timeout, owner, [this] { flush(); });
}

void RefreshPacer::changed()
{
    const int64_t now = clock_.nowNs();
    if (!lastNs_ || now - *lastNs_ >= spacingNs_) {
        refresh(now);
        return;
    }
    // The first change of a wait starts the clock on it; later ones ride on it.
    if (!pending_) timer_->start();
    pending_ = true;
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
