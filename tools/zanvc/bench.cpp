// zanvc bench: runs the benchmark program with CSV output and lays its
// results out per kernel.
//
// The benchmark names carry the layout:
//   <family>/<entry>/rule|u8|n8   one row per entry: the scalar rule, the two
//                                 vector kernels, and rule / best kernel
//   <family>/export/<what>        calls through the exported functions
//   <family>/export/<S>xN_8cand   beside <family>/export/<S>_x8: one
//                                 candidate-row call against eight
//                                 single-block calls
//   <family>/direct/<what>        beside <family>/export/<what>: the same
//                                 work by a direct call of the active path's
//                                 kernel; the table shows the export's cost
//                                 over it
//   <family>/peer/<what>          beside <family>/export/<what>: the same
//                                 work by another library's function; the
//                                 table shows ours / peer
// Times are CPU time per call, in nanoseconds; with --repetitions=N the
// median of N runs.
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "commands.h"
#include "zanvc.h"

namespace zanvc_tool {
namespace {

// ------------------------------------------------------------ the program

bool executable(const std::string& path) { return !path.empty() && access(path.c_str(), X_OK) == 0; }

// The benchmark program: the one built beside this program's build, else
// zanvc_bench in this program's directory, else the first in PATH.
std::string find_bench_program() {
#ifdef ZANVC_BENCH_PROGRAM
    if (executable(ZANVC_BENCH_PROGRAM)) return ZANVC_BENCH_PROGRAM;
#endif
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof self - 1);
    if (n > 0) {
        self[n] = 0;
        std::string candidate(self);
        candidate.erase(candidate.rfind('/') + 1);
        candidate.append("zanvc_bench");
        if (executable(candidate)) return candidate;
    }
    if (const char* path = std::getenv("PATH")) {
        std::string p(path);
        size_t start = 0;
        while (start <= p.size()) {
            size_t end = p.find(':', start);
            if (end == std::string::npos) end = p.size();
            std::string candidate = end > start ? p.substr(start, end - start) : std::string(".");
            candidate.append("/zanvc_bench");
            if (executable(candidate)) return candidate;
            start = end + 1;
        }
    }
    return {};
}

// Single-quoted for the shell.
std::string quote(const std::string& s) {
    std::string q = "'";
    for (char c : s) {
        if (c == '\'') q += "'\\''";
        else q += c;
    }
    return q + "'";
}

// ------------------------------------------------------------------ CSV

// Splits one CSV line; quoted fields may hold commas and doubled quotes.
std::vector<std::string> split_csv(const std::string& line) {
    std::vector<std::string> fields;
    std::string field;
    bool quoted = false;
    for (size_t i = 0; i < line.size(); ++i) {
        char c = line[i];
        if (quoted) {
            if (c == '"' && i + 1 < line.size() && line[i + 1] == '"') {
                field += '"';
                ++i;
            } else if (c == '"') {
                quoted = false;
            } else {
                field += c;
            }
        } else if (c == '"') {
            quoted = true;
        } else if (c == ',') {
            fields.push_back(field);
            field.clear();
        } else if (c != '\r' && c != '\n') {
            field += c;
        }
    }
    fields.push_back(field);
    return fields;
}

struct Result {
    std::string name;
    double ns = 0;      // CPU time per iteration
    int runs = 0;       // repetitions averaged
    bool median = false;  // taken from a _median aggregate row
    std::string error;  // set when the benchmark reported an error
};

double unit_to_ns(const std::string& unit) {
    if (unit == "us") return 1e3;
    if (unit == "ms") return 1e6;
    if (unit == "s") return 1e9;
    return 1.0;
}

bool ends_with(const std::string& s, const char* tail) {
    size_t n = std::strlen(tail);
    return s.size() >= n && s.compare(s.size() - n, n, tail) == 0;
}

// Adds one row: plain repetitions are averaged, a _median aggregate replaces
// them, other aggregates are left out.
void add_result(std::vector<Result>& results, std::string name, double ns, const std::string& error) {
    bool median = false;
    for (const char* agg : {"_mean", "_stddev", "_cv"})
        if (ends_with(name, agg)) return;
    if (ends_with(name, "_median")) {
        name.erase(name.size() - 7);
        median = true;
    }
    for (Result& r : results)
        if (r.name == name) {
            if (median) {
                r.ns = ns;
                r.median = true;
            } else if (!r.median) {
                r.ns = (r.ns * r.runs + ns) / (r.runs + 1);
                ++r.runs;
            }
            if (!error.empty()) r.error = error;
            return;
        }
    results.push_back({name, ns, 1, median, error});
}

// --------------------------------------------------------------- tables

std::string fmt(const char* format, double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, format, v);
    return buf;
}

// Text with aligned columns (first left, others right) or a Markdown table.
class Table {
public:
    Table(std::string title, std::vector<std::string> header) : title_(std::move(title)), header_(std::move(header)) {}
    void row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
    bool empty() const { return rows_.empty(); }
    void print(bool markdown) const {
        if (markdown) {
            std::printf("\n### %s\n\n|", title_.c_str());
            for (const auto& h : header_) std::printf(" %s |", h.c_str());
            std::printf("\n|");
            for (size_t i = 0; i < header_.size(); ++i) std::printf(i == 0 ? " :--- |" : " ---: |");
            std::printf("\n");
            for (const auto& r : rows_) {
                std::printf("|");
                for (const auto& c : r) std::printf(" %s |", c.c_str());
                std::printf("\n");
            }
            return;
        }
        std::vector<size_t> width(header_.size());
        for (size_t i = 0; i < header_.size(); ++i) width[i] = header_[i].size();
        for (const auto& r : rows_)
            for (size_t i = 0; i < r.size() && i < width.size(); ++i) width[i] = std::max(width[i], r[i].size());
        std::printf("\n%s\n", title_.c_str());
        auto line = [&](const std::vector<std::string>& cells) {
            for (size_t i = 0; i < cells.size() && i < width.size(); ++i)
                std::printf(i == 0 ? "  %-*s" : "  %*s", static_cast<int>(width[i]), cells[i].c_str());
            std::printf("\n");
        };
        line(header_);
        std::vector<std::string> rule;
        for (size_t w : width) rule.push_back(std::string(w, '-'));
        line(rule);
        for (const auto& r : rows_) line(r);
    }

private:
    std::string title_;
    std::vector<std::string> header_;
    std::vector<std::vector<std::string>> rows_;
};

const Result* find(const std::vector<Result>& results, const std::string& name) {
    for (const Result& r : results)
        if (r.name == name) return &r;
    return nullptr;
}

std::string cell(const Result* r) {
    if (!r) return "-";
    if (!r->error.empty()) return "error";
    return fmt("%.1f", r->ns);
}

bool usable(const Result* r) { return r && r->error.empty() && r->ns > 0; }

struct Entry {
    std::string family, name;
};

// Builds and prints every table from the results, in the order the
// benchmarks ran.
void print_tables(const std::vector<Result>& results, bool markdown) {
    std::vector<std::string> families;
    std::vector<Entry> entries;
    for (const Result& r : results) {
        size_t a = r.name.find('/');
        if (a == std::string::npos) continue;
        std::string family = r.name.substr(0, a);
        bool seen = false;
        for (const auto& f : families) seen |= f == family;
        if (!seen) families.push_back(family);
        size_t b = r.name.rfind('/');
        if (b == a || r.name.compare(a + 1, 7, "export/") == 0 || r.name.compare(a + 1, 7, "direct/") == 0 ||
            r.name.compare(a + 1, 5, "peer/") == 0)
            continue;
        std::string kind = r.name.substr(b + 1);
        if (kind != "rule" && kind != "u8" && kind != "n8") continue;
        Entry e{family, r.name.substr(a + 1, b - a - 1)};
        bool have = false;
        for (const auto& x : entries) have |= x.family == e.family && x.name == e.name;
        if (!have) entries.push_back(e);
    }

    for (const std::string& family : families) {
        Table kernels(family + ": kernels (CPU ns per call)", {"kernel", "scalar ns", "u8 ns", "n8 ns", "speed-up"});
        for (const Entry& e : entries) {
            if (e.family != family) continue;
            const std::string base = family + "/" + e.name + "/";
            const Result* rule = find(results, base + "rule");
            const Result* u8 = find(results, base + "u8");
            const Result* n8 = find(results, base + "n8");
            std::string speedup = "-";
            double best = 0;
            for (const Result* k : {u8, n8})
                if (usable(k) && (best == 0 || k->ns < best)) best = k->ns;
            if (usable(rule) && best > 0) speedup = fmt("%.1fx", rule->ns / best);
            kernels.row({e.name, cell(rule), cell(u8), cell(n8), speedup});
        }
        if (!kernels.empty()) kernels.print(markdown);

        // Exported functions, and the candidate-row comparisons.
        const std::string prefix = family + "/export/";
        const std::string directPrefix = family + "/direct/", peerPrefix = family + "/peer/";
        bool anyDirect = false, anyPeer = false;
        for (const Result& r : results) {
            anyDirect |= r.name.compare(0, directPrefix.size(), directPrefix) == 0;
            anyPeer |= r.name.compare(0, peerPrefix.size(), peerPrefix) == 0;
        }
        std::vector<std::string> header = {"function", "ns"};
        if (anyDirect || anyPeer) {
            header.insert(header.end(), {"kernel ns", "export - kernel", "peer ns", "ours / peer"});
        }
        Table exports(family + ": exported functions, path " + active_path() + " (CPU ns per call)", header);
        Table rows(family + ": one candidate-row call (8 candidates) against 8 single-block calls, path " +
                       active_path() + " (CPU ns)",
                   {"block", "xN, 8 candidates", "8 single calls", "singles / xN"});
        for (const Result& r : results) {
            if (r.name.compare(0, prefix.size(), prefix) != 0) continue;
            const std::string what = r.name.substr(prefix.size());
            if (ends_with(what, "_x8") && find(results, prefix + what.substr(0, what.size() - 3) + "xN_8cand"))
                continue;  // shown beside its candidate-row call
            if (ends_with(what, "xN_8cand")) {
                const std::string size = what.substr(0, what.size() - 8);
                const Result* singles = find(results, prefix + size + "_x8");
                if (singles) {
                    std::string ratio = usable(&r) && usable(singles) ? fmt("%.2fx", singles->ns / r.ns) : "-";
                    rows.row({size, cell(&r), cell(singles), ratio});
                    continue;
                }
            }
            if (anyDirect || anyPeer) {
                const Result* direct = find(results, directPrefix + what);
                const Result* peer = find(results, peerPrefix + what);
                std::string over = usable(&r) && usable(direct) ? fmt("%+.1f", r.ns - direct->ns) : "-";
                std::string ratio = usable(&r) && usable(peer) ? fmt("%.2fx", r.ns / peer->ns) : "-";
                exports.row({what, cell(&r), direct ? cell(direct) : "-", over, peer ? cell(peer) : "-", ratio});
            } else {
                exports.row({what, cell(&r)});
            }
        }
        if (!exports.empty()) exports.print(markdown);
        if (anyDirect && !anyPeer)
            std::printf("%s(no peer timings: the benchmark program was built without libavutil)\n",
                        markdown ? "\n" : "  ");
        if (!rows.empty()) rows.print(markdown);
    }
}

}  // namespace

int bench(int argc, char** argv) {
    bool markdown = false;
    std::string filter, minTime, repetitions;
    for (int i = 0; i < argc; ++i) {
        const char* a = argv[i];
        if (std::strcmp(a, "--markdown") == 0) {
            markdown = true;
        } else if (std::strncmp(a, "--min-time=", 11) == 0) {
            char* end = nullptr;
            double s = std::strtod(a + 11, &end);
            if (!a[11] || *end || !(s > 0) || s > 60) {
                std::fprintf(stderr, "zanvc bench: --min-time takes seconds, above 0 and at most 60\n");
                return 2;
            }
            minTime = a + 11;
        } else if (std::strncmp(a, "--repetitions=", 14) == 0) {
            char* end = nullptr;
            long n = std::strtol(a + 14, &end, 10);
            if (!a[14] || *end || n < 1 || n > 100) {
                std::fprintf(stderr, "zanvc bench: --repetitions takes 1 to 100\n");
                return 2;
            }
            repetitions = a + 14;
        } else if (a[0] == '-') {
            std::fprintf(stderr, "zanvc bench: unknown option %s (see zanvc help)\n", a);
            return 2;
        } else if (filter.empty()) {
            filter = a;
        } else {
            std::fprintf(stderr, "zanvc bench: one filter only\n");
            return 2;
        }
    }

    const std::string program = find_bench_program();
    if (program.empty()) {
        std::fprintf(stderr,
                     "zanvc bench: zanvc_bench not found (build it with the ZANVC_BENCH option, the target "
                     "zanvc_bench, or put it in PATH)\n");
        return 2;
    }

    // The program's own messages (its context lines, warnings, errors) go to
    // a file, shown in part on success and whole on failure.
    char errPath[] = "/tmp/zanvc-bench-XXXXXX";
    int errFd = mkstemp(errPath);
    if (errFd < 0) {
        std::fprintf(stderr, "zanvc bench: cannot make a temporary file: %s\n", std::strerror(errno));
        return 1;
    }
    close(errFd);
    std::string command = quote(program) + " --benchmark_format=csv";
    if (!filter.empty()) command += " --benchmark_filter=" + quote(filter);
    if (!minTime.empty()) command += " --benchmark_min_time=" + quote(minTime);
    if (!repetitions.empty() && repetitions != "1")
        command += " --benchmark_repetitions=" + repetitions + " --benchmark_report_aggregates_only=true";
    command += " 2>" + quote(errPath);

    if (!markdown) std::fprintf(stderr, "running %s ...\n", program.c_str());
    FILE* p = popen(command.c_str(), "r");
    if (!p) {
        std::fprintf(stderr, "zanvc bench: cannot run %s\n", program.c_str());
        unlink(errPath);
        return 1;
    }
    std::vector<Result> results;
    std::vector<std::string> header;
    int iName = -1, iCpu = -1, iUnit = -1, iErr = -1, iMsg = -1;
    std::string line;
    char buf[4096];
    while (std::fgets(buf, sizeof buf, p)) {
        line += buf;
        if (line.empty() || line.back() != '\n') continue;  // a longer line goes on
        std::vector<std::string> f = split_csv(line);
        line.clear();
        if (header.empty()) {
            if (f.empty() || f[0] != "name") continue;
            header = f;
            for (size_t i = 0; i < f.size(); ++i) {
                if (f[i] == "name") iName = static_cast<int>(i);
                if (f[i] == "cpu_time") iCpu = static_cast<int>(i);
                if (f[i] == "time_unit") iUnit = static_cast<int>(i);
                if (f[i] == "error_occurred") iErr = static_cast<int>(i);
                if (f[i] == "error_message") iMsg = static_cast<int>(i);
            }
            continue;
        }
        if (iName < 0 || iCpu < 0 || static_cast<size_t>(iName) >= f.size()) continue;
        auto field = [&](int i) { return i >= 0 && static_cast<size_t>(i) < f.size() ? f[static_cast<size_t>(i)] : std::string(); };
        std::string error = field(iErr) == "true" ? (field(iMsg).empty() ? "error" : field(iMsg)) : "";
        double ns = std::strtod(field(iCpu).c_str(), nullptr) * unit_to_ns(field(iUnit));
        add_result(results, field(iName), ns, error);
    }
    int status = pclose(p);

    // Context lines of the benchmark library: the machine it ran on.
    std::string errText;
    if (FILE* e = std::fopen(errPath, "r")) {
        while (std::fgets(buf, sizeof buf, e)) errText += buf;
        std::fclose(e);
    }
    unlink(errPath);
    const bool failed = status == -1 || !WIFEXITED(status) || WEXITSTATUS(status) != 0;
    if (failed || results.empty()) {
        std::fputs(errText.c_str(), stderr);
        std::fprintf(stderr, failed ? "zanvc bench: %s failed\n" : "zanvc bench: %s ran no benchmark%s\n",
                     program.c_str(), filter.empty() ? "" : " matching the filter");
        return 1;
    }

    std::string runOn;
    size_t at = errText.find("Run on ");
    if (at != std::string::npos) runOn = errText.substr(at + 7, errText.find('\n', at) - at - 7);
    const ZanLibraryVersion* v = zanvcGetLibVersion();
    if (markdown) {
        std::printf("Library %s (%s), exported functions on path %s; run on %s.  CPU time per call in ns, "
                    "speed-up = scalar rule / faster vector kernel.\n",
                    v->name, v->versionText, active_path(), runOn.empty() ? "machine not reported" : runOn.c_str());
    } else {
        std::printf("%s (%s), exported functions on path %s\n", v->name, v->versionText, active_path());
        if (!runOn.empty()) std::printf("run on %s\n", runOn.c_str());
        std::printf("speed-up: scalar rule / faster vector kernel\n");
    }
    print_tables(results, markdown);
    int errors = 0;
    for (const Result& r : results) errors += !r.error.empty();
    if (errors) {
        std::fprintf(stderr, "\nzanvc bench: %d benchmarks reported an error:\n", errors);
        for (const Result& r : results)
            if (!r.error.empty()) std::fprintf(stderr, "  %s: %s\n", r.name.c_str(), r.error.c_str());
        return 1;
    }
    return 0;
}

}  // namespace zanvc_tool
