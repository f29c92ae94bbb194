#include "platform/CDeleter.h"
#include "post/kqu-run/Arguments.h"
#include "post/kqu-run/Volumes.h"
#include "post/kqu-run/tools/Numbers.h"
#include "post/kqu-run/tools/Tool.h"

#include <algorithm>
#include <cstdlib>
#include <json-c/json.h>

namespace kqu::run {

namespace {
/// Their options without a value, by their help texts. Any other is taken for one with a value, so
/// that no value passes for the name of a file.
constexpr std::string_view resticFlags =
    "c f h n q v x allow-other blob cleanup-cache compact copy-chunker-params dry-run "
    "exclude-caches force help ignore-case ignore-ctime ignore-inode insecure-tls json long "
    "metadata no-cache no-default-permissions no-extra-verify no-lock no-scan one-file-system "
    "owner-root pack prune quiet read-all-packs read-data recursive remove-all "
    "repack-cacheable-only repack-small repack-uncompressed show-pack-id skip-if-unchanged stdin "
    "stdin-from-command tree use-fs-snapshot verbose verify with-atime with-cache";
constexpr std::string_view borgFlags =
    "f h l n p s v x append-only archives-only atime bypass-lock cache cache-only "
    "cleanup-commits consider-checkpoints consider-part-files content-from-command critical debug "
    "delete disable-tam dry-run error exclude-caches exclude-nodump force foreground help iec "
    "ignore-zeros info inplace json json-lines keep-exclude-tags keep-security-info list log-json "
    "make-parent-dirs no-cache-sync noacls noatime nobirthtime nobsdflags noctime noflags noxattrs "
    "numeric-ids numeric-owner one-file-system paths-from-command paths-from-stdin progress "
    "read-special recompress repair repository-only save-space short show-rc show-version sparse "
    "stats stdout tam verbose verify-data warning";
constexpr std::string_view leavesOut =
    "e exclude exclude-from exclude-caches exclude-if-present exclude-nodump pattern patterns-from "
    "paths-from-stdin paths-from-command";

/// One line of JSON as a tool prints it (RFC 8259); a line that is none has no values.
class Json {
  public:
    explicit Json(std::string_view line) : object_(json_tokener_parse(std::string(line).c_str())) {}

    [[nodiscard]] std::optional<double> Number(const char* key) const {
        json_object* value = Find(key);
        return json_object_is_type(value, json_type_double) ||
                       json_object_is_type(value, json_type_int)
                   ? std::optional(json_object_get_double(value))
                   : std::nullopt;
    }
    /// The text, or the first one of a list; empty where there is none.
    [[nodiscard]] std::string Text(const char* key) const {
        json_object* value = Find(key);
        if (json_object_is_type(value, json_type_array))
            value = json_object_array_get_idx(value, 0);
        return json_object_is_type(value, json_type_string) ? json_object_get_string(value) : "";
    }

  private:
    [[nodiscard]] json_object* Find(const char* key) const {
        json_object* value = nullptr;
        json_object_object_get_ex(object_.get(), key, &value);
        return value;
    }

    platform::CPointer<json_object, json_object_put> object_;
};

class Archiver : public Tool {
  protected:
    /// The row of a subcommand. `given` names the repository, or the variable does. `sources` are
    /// the folders that are saved, if it saves any.
    void NameRow(const std::string& program, const std::string& command, std::string given,
                 const char* variable, const std::vector<std::string>& sources) {
        command_ = command;
        // A word that is none of theirs may be the value of an option that is not known here.
        progress_.text =
            Pattern("^[a-z-]+$").In(command).empty() ? program : program + " " + command;
        const char* const usual = std::getenv(variable);
        given = given.empty() && usual != nullptr ? usual : given;
        row_.folder = true;
        row_.volume = row_.destination = Destination(given);
        if (!sources.empty())
            NameSources(sources);
        if (command == "check")
            row_.tool = post::FindTool("scanner");
    }

    std::string command_;
};

/// It shows its progress on a terminal, and elsewhere if RESTIC_PROGRESS_FPS or --json is given;
/// what that adds elsewhere can't be told from the rest, so it is not asked.
class Restic : public Archiver {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, resticFlags, Arguments::Listed::HasNoValue);
        std::vector<std::string> paths = arguments.Operands();
        if (paths.empty())
            return;
        const std::string command = paths.front();
        paths.erase(paths.begin());
        if (command != "backup")
            paths.clear();
        NameRow("restic", command, arguments.Value("r repo").value_or(""), "RESTIC_REPOSITORY",
                paths);
        if (const auto target = arguments.Value("t target"))
            row_.destination = LocalDestination(*target);
        if (command == "check")
            counted_ = arguments.Has("read-data read-data-subset") ? "packs" : "snapshots";
        const bool tells = launch.terminal[1] || arguments.Has("json") ||
                           std::getenv("RESTIC_PROGRESS_FPS") != nullptr;
        // Other commands may print a whole file.
        static const Pattern longOnes("^(backup|restore|check|prune|copy)$");
        if (tells && !longOnes.In(command).empty())
            launch.stream = 1;
    }

    /// "[0:01] 23.45%  30 files 43.089 MiB, total 31 files 56.267 MiB, 0 errors ETA 0:03"; until
    /// the total is known, without a percentage. Behind it come the files in work, one to a line.
    /// Other commands count things: "[0:00] 50.00%  2 / 4 packs".
    void Read(std::string_view line) override {
        static const Pattern counted("^\\[[^]]*\\] +[0-9.,]+% +([0-9]+) / ([0-9]+) ([a-z ]+)");
        static const Pattern share("^\\[[^]]*\\] +[0-9.,]+%");
        static const Pattern files("^\\[[^]]*\\].* files ([^,]*), total [0-9]+ files ([^,]*)");
        if (line.starts_with('{'))
            ReadJson(Json(line));
        else if (const auto parts = counted.In(line); !parts.empty())
            CountThings(parts);
        else if (const auto begin = share.In(line); !begin.empty())
            progress_.share = LastPercentage(begin[0]);
        else if (const auto sizes = files.In(line); !sizes.empty())
            progress_.share = Share(Amount(sizes[1]).value_or(0), Amount(sizes[2]).value_or(0));
        else if (line.starts_with('/') && command_ == "backup")
            progress_.file = line;
    }

    void Look(pid_t /*process*/, bool /*isRead*/) override {}

  private:
    /// Several kinds, one after the other. Of a check, the one that takes longest makes the bar.
    void CountThings(const std::vector<std::string_view>& parts) {
        if (!parts[3].starts_with(counted_))
            return;
        progress_.phase += !things_.empty() && parts[3] != things_ ? 1 : 0;
        things_ = parts[3];
        progress_.text = "restic " + command_ + ", " + std::string(parts[1]) + " of " +
                         std::string(parts[2]) + " " + things_;
        progress_.share = Share(Count(parts[1]), Count(parts[2]));
    }

    void ReadJson(const Json& status) {
        if (const auto share = status.Number("percent_done"))
            progress_.share = share;
        if (const std::string file = status.Text("current_files"); !file.empty())
            progress_.file = file;
    }

    std::string_view counted_;
    std::string things_;
};

/// With --progress it tells how much it has read, not of how much: that is added up beside it.
class Borg : public Archiver {
  public:
    void Prepare(Launch& launch) override {
        const Arguments arguments(launch, borgFlags, Arguments::Listed::HasNoValue);
        const std::vector<std::string>& operands = arguments.Operands();
        if (operands.empty())
            return;
        const std::string place = operands.size() > 1 ? operands[1] : "";
        if (operands[0] == "create" && operands.size() > 2)
            work_.trees.assign(operands.begin() + 2, operands.end());
        NameRow("borg", operands[0], place.substr(0, place.find("::")), "BORG_REPO", work_.trees);
        if (arguments.Has(leavesOut))
            work_.trees.clear();
        work_.staysOnVolume = arguments.Has("x one-file-system");
        if (command_ == "check" && !arguments.Has("archives-only"))
            phases_.emplace_back("Checking segments");
        if (command_ == "check" && arguments.Has("verify-data"))
            phases_.emplace_back("Verifying data");
        if (command_ == "check" && !arguments.Has("repository-only"))
            phases_.emplace_back("Analyzing archive");
        // On a terminal a progress is welcome; anywhere else it would stand among the messages.
        const bool asks = command_ == "create" && launch.terminal[2] &&
                          !arguments.Has("p progress log-json list");
        if (asks)
            launch.arguments.insert(launch.arguments.begin() + static_cast<long>(launch.tool) + 1,
                                    "--progress");
        if (asks || arguments.Has("p progress"))
            launch.stream = 2;
    }

    /// "33.55 MB O 33.55 MB C 0 B D 30 N src/d2/big", filled up with blanks; or "Checking segments
    /// 12.5%".
    void Read(std::string_view line) override {
        static const Pattern created("^([0-9.,]+ [A-Za-z]+) O .* N (.*[^ ])? *$");
        if (line.starts_with('{')) {
            const Json status(line);
            done_ = status.Number("original_size").value_or(done_);
            SetFile(status.Text("path"));
            ReadPhase(status.Text("message"));
        } else if (const auto parts = created.In(line); !parts.empty()) {
            done_ = Amount(parts[1]).value_or(0);
            SetFile(parts[2]);
        } else {
            ReadPhase(line);
        }
    }

    void Look(pid_t /*process*/, bool /*isRead*/) override {
        if (const double size = WorkSize(); done_ > 0)
            Report(done_, size);
    }

  private:
    /// "Checking segments 12.5%", "Analyzing archive name (2/3)": a check counts its phases alike.
    void ReadPhase(std::string_view line) {
        static const Pattern numbered("\\(([0-9]+)/([0-9]+)\\)$");
        auto share = LastPercentage(line);
        const auto phase = std::ranges::find_if(
            phases_, [&](std::string_view name) { return line.starts_with(name); });
        if (phases_.empty() && command_ != "create")
            progress_.share = share ? share : progress_.share;
        if (phase == phases_.end())
            return;
        if (const auto parts = numbered.In(line); !parts.empty())
            share = Share(Count(parts[1]) - 1, Count(parts[2]));
        progress_.text = *phase;
        progress_.share = Share(static_cast<double>(phase - phases_.begin()) + share.value_or(0),
                                static_cast<double>(phases_.size()));
    }

    void SetFile(std::string_view file) {
        if (!file.empty())
            progress_.file = file;
    }

    /// Those of a check, by the words that each of their lines begins with.
    std::vector<std::string_view> phases_;
    double done_ = 0;
};
} // namespace

std::unique_ptr<Tool> MakeRestic() {
    return std::make_unique<Restic>();
}

std::unique_ptr<Tool> MakeBorg() {
    return std::make_unique<Borg>();
}

} // namespace kqu::run
