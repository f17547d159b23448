#include "keeper/Metrics.h"

#include "src/Messages.h"

#include <array>
#include <prometheus/text_serializer.h>

namespace drench::keeper {

namespace {

using namespace prometheus;

/// Seconds. A receipt on loopback takes some 50 us; a processor under load adds milliseconds, and
/// what takes longer than Probe::patience is no receipt.
const Histogram::BucketBoundaries roundTripBounds = {
    0.00005, 0.0001, 0.00025, 0.0005, 0.001, 0.0025, 0.005, 0.01, 0.025, 0.05, 0.1, 0.5};

constexpr std::array<const char*, 3> restartReasons = {"age", "error", "signal"};

const char* nameOf(Restart reason) {
    return restartReasons.at(static_cast<std::size_t>(reason));
}

} // namespace

Counter& Metrics::counter(const std::string& name, const std::string& help) {
    return BuildCounter().Name(name).Help(help).Register(*registry_).Add({});
}

Gauge& Metrics::gauge(const std::string& name, const std::string& help) {
    return BuildGauge().Name(name).Help(help).Register(*registry_).Add({});
}

Metrics::Metrics(const std::string& version)
    : restarts_(&BuildCounter()
                     .Name("drench_room_restarts_total")
                     .Help("Servers that were started again, by the end of the one before.")
                     .Register(*registry_)),
      agonesFailures_(&BuildCounter()
                           .Name("drench_keeper_agones_failures_total")
                           .Help("Calls to the SDK server of Agones that did not succeed.")
                           .Register(*registry_)),
      players_(&gauge("drench_room_players", "Players in the room.")),
      joins_(&counter("drench_room_joins_total", "Players who were let in.")),
      leaves_(&counter("drench_room_leaves_total", "Players who left or fell silent.")),
      refusals_(&counter("drench_room_refusals_total", "Joins refused because the room was full.")),
      soakings_(&counter("drench_room_soakings_total", "Players soaked by another.")),
      answering_(&gauge("drench_room_answering", "Whether the room answers, 1 or 0.")),
      roundTrips_(&BuildHistogram()
                       .Name("drench_room_receipt_round_trip_seconds")
                       .Help("Time from a datagram to the room until its receipt, on this machine.")
                       .Register(*registry_)
                       .Add({}, roundTripBounds)),
      unansweredProbes_(&counter("drench_room_unanswered_probes_total",
                                 "Datagrams to the room that drew no receipt in time.")),
      age_(&gauge("drench_room_age_seconds", "Time since the server's start.")),
      processorSeconds_(
          &counter("drench_room_cpu_seconds_total", "Processor time that the server used.")),
      residentBytes_(&gauge("drench_room_resident_memory_bytes", "Resident memory of the server.")),
      corrections_(&counter("drench_keeper_headcount_corrections_total",
                            "Times that the network contradicted the count of players.")) {
    gauge("drench_room_players_limit", "Players that the room holds.").Set(maxPlayers);
    BuildGauge()
        .Name("drench_keeper_build_info")
        .Help("The program's version, with the value 1.")
        .Register(*registry_)
        .Add({{"version", version}})
        .Set(1.0);
    // A rate needs the zero before the first.
    for (const char* reason : restartReasons)
        restarts_->Add({{"reason", reason}});
}

std::string Metrics::text() const {
    return TextSerializer().Serialize(registry_->Collect());
}

void Metrics::restarted(Restart reason) {
    restarts_->Add({{"reason", nameOf(reason)}}).Increment();
}

void Metrics::raiseTo(Counter& counter, double value) {
    if (value > counter.Value())
        counter.Increment(value - counter.Value());
}

void Metrics::setCorrections(std::uint64_t corrections) {
    raiseTo(*corrections_, static_cast<double>(corrections));
}

void Metrics::setUnansweredProbes(std::uint64_t unanswered) {
    raiseTo(*unansweredProbes_, static_cast<double>(unanswered));
}

void Metrics::observeRoundTrip(std::chrono::duration<double> roundTrip) {
    roundTrips_->Observe(roundTrip.count());
}

void Metrics::setUsage(const Usage& usage) {
    if (usage.processorSeconds > serverSeconds_)
        processorSeconds_->Increment(usage.processorSeconds - serverSeconds_);
    serverSeconds_ = usage.processorSeconds;
    residentBytes_->Set(usage.residentBytes);
}

void Metrics::agonesCallFailed(const std::string& call, int times) {
    agonesFailures_->Add({{"call", call}}).Increment(times);
}

} // namespace drench::keeper
