#pragma once

#include "keeper/Proc.h"

#include <chrono>
#include <memory>
#include <prometheus/counter.h>
#include <prometheus/gauge.h>
#include <prometheus/histogram.h>
#include <prometheus/registry.h>
#include <string>

namespace drench::keeper {

/// Why a server was started again.
enum class Restart { aged, error, signal };

/// All that a keeper publishes, in the text format of Prometheus. May be read from any thread.
class Metrics {
  public:
    /// @param version  of this program
    explicit Metrics(const std::string& version);

    /// The answer to a scrape.
    std::string text() const;

    void joined() { joins_->Increment(); }
    void left() { leaves_->Increment(); }
    void refused() { refusals_->Increment(); }
    void soaked() { soakings_->Increment(); }
    void restarted(Restart reason);

    void setPlayers(int players) { players_->Set(players); }
    void setAnswering(bool answering) { answering_->Set(answering ? 1.0 : 0.0); }
    void setAge(std::chrono::duration<double> age) { age_->Set(age.count()); }
    void setCorrections(std::uint64_t corrections);
    void setUnansweredProbes(std::uint64_t unanswered);
    void observeRoundTrip(std::chrono::duration<double> roundTrip);

    /// A new server counts its processor time from 0; the published sum goes on.
    void serverStarted() { serverSeconds_ = 0.0; }
    void setUsage(const Usage& usage);

    void agonesCallFailed(const std::string& call, int times);

  private:
    static void raiseTo(prometheus::Counter& counter, double value);
    prometheus::Counter& counter(const std::string& name, const std::string& help);
    prometheus::Gauge& gauge(const std::string& name, const std::string& help);

    std::shared_ptr<prometheus::Registry> registry_ = std::make_shared<prometheus::Registry>();
    prometheus::Family<prometheus::Counter>* restarts_;
    prometheus::Family<prometheus::Counter>* agonesFailures_;
    prometheus::Gauge* players_;
    prometheus::Counter* joins_;
    prometheus::Counter* leaves_;
    prometheus::Counter* refusals_;
    prometheus::Counter* soakings_;
    prometheus::Gauge* answering_;
    prometheus::Histogram* roundTrips_;
    prometheus::Counter* unansweredProbes_;
    prometheus::Gauge* age_;
    prometheus::Counter* processorSeconds_;
    prometheus::Gauge* residentBytes_;
    prometheus::Counter* corrections_;
    double serverSeconds_ = 0.0;
};

} // namespace drench::keeper
