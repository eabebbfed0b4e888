// SPDX-License-Identifier: GPL-3.0-or-later
#include "LoadSimulation.h"
#include "TimeRules.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace {

using Flow = TimeEstimate::Flow;

/// Nearer the end than this, rounding to a minute outweighs every rule, and nothing is counted.
constexpr double leastMinutes = 10;

/// A told time within this part of the true one helps somebody who waits.
constexpr double sensible = 0.3;

double quantile(std::vector<double> values, double part) {
    if (values.empty())
        return std::numeric_limits<double>::quiet_NaN();
    const auto nth = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

/// The score of one rule on one kind of load. A value that nothing counts for is NaN, which is shown as a dash.
struct Score {
    std::vector<double> logs;   ///< |ln(told / true)| of each reading
    std::vector<double> firsts; ///< of the first told time after each plug
    double errors = 0;
    double jumps = 0;
    double minutes = 0; ///< with a time shown at both ends
    double readings = 0;
    double waited = 0; ///< seconds after each plug, or the change, until the told time is sensible
    double plugs = 0;
    double worst = 0;

    double told() const { return static_cast<double>(logs.size()); }
    double error() const { return 100 * errors / told(); }
    double median() const { return quantile(logs, 0.5); }
    double ninth() const { return quantile(logs, 0.9); }
    double first() const { return quantile(firsts, 0.5); }
    double jumpiness() const { return 100 * jumps / minutes; }
    double toldShare() const { return 100 * told() / readings; }
    double wait() const { return waited / plugs; }
    double worstPromise() const { return worst; }
};

void play(const SimulatedLoad& load, const Tell& tell, Score& score) {
    Told before;
    double trueBefore = 0;
    std::optional<Flow> flow;
    double pluggedAt = 0;
    double lastAt = 0;
    bool isFirst = true;
    bool waits = false;
    const auto endWait = [&](double at) {
        if (std::exchange(waits, false))
            score.waited += at - pluggedAt;
    };
    for (const auto& [reading, trueMinutes, counts] : load.readings) {
        const Told told = tell(reading);
        const double at = (reading.uptime - reading.slept).count();
        if (reading.flow != flow) {
            endWait(lastAt);
            flow = reading.flow;
            pluggedAt = at;
            isFirst = waits = true;
            ++score.plugs;
            before.reset();
        }
        lastAt = at;
        if (!counts)
            pluggedAt = at;
        if (trueMinutes < leastMinutes || !counts)
            continue;
        ++score.readings;
        if (told) {
            // A told 0 would be infinitely wrong.
            const double log = std::abs(std::log(std::max(0.5, static_cast<double>(*told)) / trueMinutes));
            score.logs.push_back(log);
            if (std::exchange(isFirst, false))
                score.firsts.push_back(log);
            if (log < sensible)
                endWait(at);
            score.errors += std::abs(static_cast<double>(*told) - trueMinutes) / trueMinutes;
            score.worst = std::max(score.worst, static_cast<double>(*told) / trueMinutes);
        }
        if (told && before) {
            const double passed = trueBefore - trueMinutes;
            score.jumps += std::abs(static_cast<double>(*told - *before) + passed) / trueMinutes;
            score.minutes += passed;
        }
        before = told;
        trueBefore = trueMinutes;
    }
    endWait(lastAt);
}

/// The true time in whole minutes: what rounding alone costs.
Tell truth(const SimulatedLoad& load) {
    return [next = load.readings.begin()](const TimeEstimate::Reading&) mutable {
        return static_cast<std::int64_t>((next++)->trueMinutes);
    };
}

/// The scores of one kind of load, in the order of the rules.
struct Column {
    std::string load;
    bool charging = false;
    std::vector<Score> scores;
};

using Value = double (Score::*)() const;

/// One row for each rule, one column for each load, and the median over the loads.
void print(const char* title, const std::vector<std::string>& rules, const std::vector<Column>& columns, Value value) {
    for (const bool charging : {false, true}) {
        std::printf("\n%s: %s\n%-26s", title, charging ? "charging" : "on battery", "");
        for (const Column& column : columns)
            if (column.charging == charging)
                std::printf(" %8s", column.load.c_str());
        std::puts("   median     mean");
        for (std::size_t i = 0; i < rules.size(); ++i) {
            std::printf("%-26s", rules[i].c_str());
            std::vector<double> values;
            double sum = 0;
            const auto put = [](double number) {
                if (std::isnan(number))
                    std::printf(" %8s", "-");
                else
                    std::printf(number < 10 ? " %8.3f" : " %8.1f", number);
            };
            for (const Column& column : columns) {
                if (column.charging != charging)
                    continue;
                const double number = (column.scores[i].*value)();
                put(number);
                if (!std::isnan(number)) {
                    values.push_back(number);
                    sum += number;
                }
            }
            put(quantile(values, 0.5));
            put(sum / static_cast<double>(values.size()));
            std::puts("");
        }
    }
}

/// The told times of all rules beside the true one, for a picture.
void printCurve(const std::vector<Contender>& rules, const SimulatedLoad& load) {
    std::printf("minute,true");
    std::vector<Tell> tells;
    for (const Contender& rule : rules) {
        std::printf(",\"%s\"", rule.name.c_str());
        tells.push_back(rule.make());
    }
    std::puts("");
    for (const auto& [reading, trueMinutes, counts] : load.readings) {
        std::printf("%.2f,%.1f", (reading.uptime - load.readings.front().reading.uptime).count() / 60, trueMinutes);
        for (const Tell& tell : tells) {
            const Told told = tell(reading);
            std::printf(told ? ",%.0f" : ",", static_cast<double>(told.value_or(0)));
        }
        std::puts("");
    }
}

} // namespace

/// Arguments: the first seed (1) and the number of seeds (10); with the name of a load after them, the told times of
/// the first seed as CSV. Rules are tuned on the seeds from 1 on; those from 1001, 2001 and 3001 on are for one look at
/// the end, which tells how much of the tuning was luck. "The truth" is the true time, rounded: no rule jumps less.
int main(int argc, char** argv) {
    const auto first = argc > 1 ? std::strtoull(argv[1], nullptr, 10) : 1;
    const auto count = argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 10;
    const auto rules = contenders();
    std::vector<std::string> names;
    for (const Contender& rule : rules)
        names.push_back(rule.name);
    names.emplace_back("the truth");
    std::vector<Column> columns;
    for (auto seed = first; seed < first + count; ++seed) {
        const auto loads = simulateLoads(seed);
        columns.resize(loads.size());
        for (std::size_t i = 0; i < loads.size(); ++i) {
            if (argc > 3 && loads[i].name == argv[3]) {
                printCurve(rules, loads[i]);
                return 0;
            }
            Column& column = columns[i];
            column.load = loads[i].name;
            column.charging = loads[i].readings.front().reading.flow == Flow::charging;
            column.scores.resize(names.size());
            for (std::size_t j = 0; j < rules.size(); ++j)
                play(loads[i], rules[j].make(), column.scores[j]);
            play(loads[i], truth(loads[i]), column.scores.back());
        }
    }
    std::printf(
        "Seeds %llu to %llu. All rules see the same readings, start anew with each run, wait as long before they\n"
        "tell a time, and tell whole minutes. The last %.0f minutes are left out. Readings with no time count in\n"
        "the table of their share only. ln: |ln(told / true)|; 0.1 is about a tenth too much or too little.\n",
        first, first + count - 1, leastMinutes);
    print("Error: median ln", names, columns, &Score::median);
    print("Error: ninth tenth of ln", names, columns, &Score::ninth);
    print("Error: mean |told - true| / true, %", names, columns, &Score::error);
    print("First told time: median ln", names, columns, &Score::first);
    print("Mean seconds after a plug, or after the change, until ln is below 0.3", names, columns, &Score::wait);
    print("Worst promise: the highest told / true", names, columns, &Score::worstPromise);
    print("Jumpiness: mean |change of the told time beyond the time that passed| / true, % a minute", names, columns,
          &Score::jumpiness);
    print("Readings with a time, %", names, columns, &Score::toldShare);
}
