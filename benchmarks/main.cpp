#include <benchmark/benchmark.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <map>
#include <string>
#include <vector>

namespace {

struct Row
{
    double value = 0;
    double limit = 0;
    std::string unit;
    std::map<std::string, double> notes; ///< what else was measured, by name
};

/// One line a figure: name, value, unit, the machine's limit, their ratio, further values. Of repeated runs
/// the best counts.
class FigureReporter : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                std::cerr << run.benchmark_name() << ": " << run.error_message << '\n';
                failed = true;
            }
            if (run.error_occurred || run.run_type != Run::RT_Iteration || run.counters.count("value") == 0)
                continue;
            const std::string name = run.run_name.function_name;
            const double value = run.counters.at("value");
            const bool higher = run.counters.at("higher") > 0;
            const auto known = rows.find(name);
            if (known == rows.end())
                order.push_back(name);
            else if (higher ? known->second.value >= value : known->second.value <= value)
                continue;
            Row row{value, run.counters.at("limit"), run.report_label, {}};
            for (const auto& [key, counter] : run.counters) {
                if (key != "value" && key != "limit" && key != "higher")
                    row.notes[key] = counter;
            }
            rows[name] = row;
        }
    }

    void Finalize() override
    {
        for (const std::string& name : order) {
            const Row& row = rows[name];
            std::printf("%-22s %12.3f %-16s limit %12.3f ratio %8.3f", name.c_str(), row.value,
                        row.unit.c_str(), row.limit, ratio(row));
            for (const auto& [key, note] : row.notes)
                std::printf(" %s %.3f", key.c_str(), note);
            std::printf("\n");
        }
    }

    /// One figure a line, so that several programs' figures can be put together.
    void writeJsonLines(const std::string& path) const
    {
        std::ofstream out(path);
        for (const std::string& name : order) {
            const Row& row = rows.at(name);
            out << '"' << name << "\": {\"value\": " << row.value << ", \"unit\": \"" << row.unit
                << "\", \"limit\": " << row.limit << ", \"ratio\": " << ratio(row) << "}\n";
        }
    }

    /// Whether a figure could not be measured.
    bool hasFailed() const { return failed; }

private:
    static double ratio(const Row& row) { return row.limit > 0 ? row.value / row.limit : 0; }

    std::map<std::string, Row> rows;
    std::vector<std::string> order;
    bool failed = false;
};

} // namespace

int main(int argc, char** argv)
{
    std::string jsonLines;
    const std::string option = "--figures=";
    std::vector<char*> arguments;
    for (int i = 0; i < argc; ++i) {
        if (std::string(argv[i]).rfind(option, 0) == 0)
            jsonLines = std::string(argv[i]).substr(option.size());
        else
            arguments.push_back(argv[i]);
    }
    int count = static_cast<int>(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    FigureReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    if (!jsonLines.empty())
        reporter.writeJsonLines(jsonLines);
    return reporter.hasFailed() ? 1 : 0;
}
