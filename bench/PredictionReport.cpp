#include "bench/PredictionFigures.h"
#include "bench/Statistics.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <numeric>
#include <ostream>
#include <sstream>

namespace drench::bench {

namespace {

using Json = nlohmann::ordered_json;

double mean(const std::vector<double>& values) {
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

std::string text(double value, int decimals) {
    if (std::isnan(value))
        return "–";
    std::ostringstream out;
    out << std::fixed << std::setprecision(decimals) << value;
    return out.str();
}

std::string quantiles(const std::vector<double>& values, std::initializer_list<double> shares,
                      int decimals) {
    std::string list;
    for (const double share : shares)
        list += (list.empty() ? "" : " / ") + text(quantile(values, share), decimals);
    return list;
}

double percent(std::uint64_t part, std::uint64_t whole) {
    return 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

template<class Predicate>
double percentOf(const std::vector<double>& values, const Predicate& holds) {
    return percent(static_cast<std::uint64_t>(std::count_if(values.begin(), values.end(), holds)),
                   values.size());
}

std::string text(const LossFigures& losses) {
    return std::to_string(losses.lost) + ": " + quantiles(losses.noticed, {0.5, 0.99}, 0) + "; " +
           quantiles(losses.goodAtOnce, {0.5, 0.99}, 0) + "; " + quantiles(losses.good, {0.99}, 0);
}

Json json(const std::vector<double>& values) {
    Json figures = {{"count", values.size()}};
    if (values.empty())
        return figures;
    figures["mean"] = mean(values);
    for (const auto& [name, share] :
         {std::pair{"p50", 0.5}, {"p90", 0.9}, {"p99", 0.99}, {"max", 1.0}})
        figures[name] = quantile(values, share);
    return figures;
}

Json json(const LossFigures& losses) {
    return {{"lost", losses.lost},
            {"noticedMilliseconds", json(losses.noticed)},
            {"goodAtOnceMilliseconds", json(losses.goodAtOnce)},
            {"goodMilliseconds", json(losses.good)}};
}

} // namespace

void printTable(std::ostream& out, const std::vector<LineFigures>& lines) {
    out << "| line | snapshots | explained %: all, to the bit | breaks | hypotheses mean / most | "
           "µs a snapshot mean / p99 / max | eye p50 / p99 | at its tick p50 / p99 | in an "
           "earlier, later tick % | lost views: "
           "noticed p50 / p99; good p50 / p99; with lost remedies p99 ms | lost keys: the same |\n"
           "|---|---|---|---|---|---|---|---|---|---|---|\n";
    for (const LineFigures& line : lines) {
        out << "| " << line.name << " | " << line.snapshots() << " | "
            << text(percent(line.exact + line.close, line.snapshots()), 3) << ", "
            << text(percent(line.exact, line.snapshots()), 3) << " | " << line.breaks << " | "
            << text(mean(line.hypotheses), 2) << " / " << quantiles(line.hypotheses, {1.0}, 0)
            << " | " << text(mean(line.microseconds), 1) << " / "
            << quantiles(line.microseconds, {0.99, 1.0}, 1) << " | "
            << quantiles(line.eyes, {0.5, 0.99}, 2) << " | "
            << quantiles(line.inputs, {0.5, 0.99}, 2) << " | "
            << text(percentOf(line.ticksLate, [](double late) { return late < 0.0; }), 1) << ", "
            << text(percentOf(line.ticksLate, [](double late) { return late > 0.0; }), 1) << " | "
            << text(line.views) << " | " << text(line.keys) << " |\n";
    }
    std::vector<double> gaps;
    for (const LineFigures& line : lines)
        gaps.insert(gaps.end(), line.gaps.begin(), line.gaps.end());
    out << "\nMilliseconds between two ticks p50 / p99 / max: "
        << quantiles(gaps, {0.5, 0.99, 1.0}, 1) << "\n";
    for (const LineFigures& line : lines) {
        if (line.wronglyTold > 0)
            out << "\n"
                << line.name << ": " << line.wronglyTold << " records told of as lost had "
                << "acted\n";
        for (const std::string& problem : line.untold)
            out << "\n" << line.name << ": the truth about a life is unknown: " << problem << "\n";
    }
}

std::string jsonReport(const std::vector<LineFigures>& lines) {
    Json report = Json::array();
    for (const LineFigures& line : lines)
        report.push_back({{"line", line.name},
                          {"lives", line.lives},
                          {"seconds", line.seconds},
                          {"snapshots", line.snapshots()},
                          {"exact", line.exact},
                          {"close", line.close},
                          {"unexplained", line.unexplained},
                          {"breaks", line.breaks},
                          {"hypotheses", json(line.hypotheses)},
                          {"microseconds", json(line.microseconds)},
                          {"tickMilliseconds", json(line.gaps)},
                          {"eye", json(line.eyes)},
                          {"atItsTick", json(line.inputs)},
                          {"ticksLate", json(line.ticksLate)},
                          {"views", json(line.views)},
                          {"keys", json(line.keys)},
                          {"wronglyTold", line.wronglyTold},
                          {"livesUntold", line.untold}});
    return report.dump(2) + "\n";
}

std::string plotColumns(const std::vector<LineFigures>& lines) {
    std::ostringstream out;
    for (const LineFigures& line : lines) {
        // The last thousandth is what the eye sees; half of the values are 0 to the bit.
        for (const auto& [name, values] :
             {std::pair{"drawn eye", &line.eyes}, {"at its tick", &line.inputs}}) {
            out << '"' << line.name << "\"\t\"" << name << "\"\n";
            double share = 0.5;
            while (share < 0.9995) {
                out << 1.0 - share << '\t' << quantile(*values, share) << '\n';
                share += (1.0 - share) / 16.0;
            }
            out << "\n\n";
        }
    }
    return out.str();
}

} // namespace drench::bench
