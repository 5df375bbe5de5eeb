// Shows that time and load wear nothing: processes of threads do all that may be done at once, and
// each result is compared with what one thread alone got.
//   soak SECONDS [PROCESSES [THREADS]]
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "jaconv.h"
#include "list.h"
#include "mbutil.h"
#include "osutils.h"
#include "support/folder.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned kSeeds = 32, kKnownLines = 300, kMostWriters = 256;
constexpr long kMostGrowth = 1024; // KiB; the allocator's arenas settle late

std::string japanese(unsigned seed) {
    std::mt19937 random(seed);
    const char* const units[] = {"\xC5\xEC", "\xB5\xFE", "\x8E\xB1", "a",
                                 "Z9",       " ",        "\n",       "\xA4\xA2"};
    std::string text;
    for (auto n = 20 + random() % 400; n != 0; --n)
        text += units[random() % 8];
    return text;
}

std::string converted(const std::string& text, int from, int to) {
    std::string out(5 * text.size() + 4, '\0');
    return convertStrExt(text.c_str(), from, out.data(), to);
}

std::string conversions(unsigned seed) {
    const std::string euc = japanese(seed), sjis = converted(euc, ZV_EUC, ZV_SJIS);
    std::string all = sjis + converted(sjis, ZV_SJIS, ZV_JIS) + converted(euc, ZV_EUC, ZV_JIS);
    all += converted(converted(euc, ZV_EUC, ZV_JIS), ZV_JIS, ZV_EUC);
    const int pairs[][2] = {{ZV_BIG5, ZV_EUC_H},    {ZV_EUC_H, ZV_BIG5},    {ZV_8859_2, ZV_CP1250},
                            {ZV_CP1250, ZV_8859_2}, {ZV_8859_5, ZV_CP1251}, {ZV_CP1251, ZV_8859_5}};
    for (const auto& [from, to] : pairs)
        all += converted(euc, from, to);
    return all;
}

std::string strings(unsigned seed) {
    const std::string text = japanese(seed);
    std::string copy(text.size() + 1, '\0'), all;
    copy.resize(mbstrncpyi(copy.data(), text.c_str(), unsigned(text.size() / 2)));
    all = copy + std::to_string(mbstricmp(text.c_str(), copy.c_str()));
    all += mbstrstr(text.c_str(), "\xB5\xFE") ? "found" : "none";
    unsigned place = 0;
    mbvalidatestring(text.c_str(), &place, ZV_EUC);
    all += std::to_string(place);
    mbstrtoupper(copy.data());
    char* rest = nullptr;
    for (char* token = copy.data(); (token = mbstrtok_r(token, " \n", &rest)); token = nullptr)
        all += token + std::string("|");
    return all;
}

std::string mail(unsigned seed) {
    std::string text = japanese(seed);
    std::string out(64 * text.size() + 64, '\0'), all;
    all = convertSubjectForMail(out.data(), text.c_str(), mbGetCodeSetForMail(ZV_EUC), ZV_EUC);
    all += convertToQuotedPrintable(out.data(), text.c_str());
    all += mbGetMIMECharset(int(seed));
    FILE* const stream = fmemopen(text.data(), text.size(), "r");
    while (mbfgets(out.data(), 60, stream, ZV_SJIS))
        all += out.c_str();
    rewind(stream);
    while (getLine(out.data(), 900, stream, ZV_EUC, 0, ZV_JIS))
        all += out.c_str();
    fclose(stream);
    return all;
}

std::string documents(unsigned seed) {
    char* document = nullptr;
    const std::string xml = "<?xml version=\"1.0\" encoding=\"x\"?>" + japanese(seed);
    SetEncodingForXMLDoc(xml.c_str(), int(seed), &document);
    std::string all = document != nullptr ? document : "none";
    free(document);
    CurrencyDetailList list;
    LoadCurrencyDetailList(("1\\USD\\" + std::to_string(seed) + "\\").c_str(), &list);
    all += list.details[0].code + std::to_string(list.details[0].value);
    free(list.details);
    return all;
}

std::string containers(unsigned seed) {
    LIST* const list = list_create(0);
    for (unsigned i = 0; i < 50; ++i)
        list_addSorted(list, reinterpret_cast<void*>(intptr_t(i * seed % 41)), nullptr, nullptr);
    LIST* const copy = list_copyShallow(list);
    std::string all;
    for (int i = 0; i < list_size(copy); ++i)
        all += char('0' + reinterpret_cast<intptr_t>(list_getNth(copy, i)));
    list_free(copy, nullptr, nullptr), list_free(list, nullptr, nullptr);
    ZVFILE* const file = OSTmpZVFile();
    ZVfprintf(file, "%s\n", japanese(seed).c_str());
    ZVrewind(file);
    for (char line[64]; ZVfgets(line, sizeof line, file);)
        all += line;
    ZVfclose(file);
    return all;
}

std::string machine(unsigned seed) {
    char out[600] = "", name[65] = "";
    std::string all;
    for (const char* path : {OSGetZVInstallPath(), OSGetZVConfigPath(), OSGetServerConfigPath(),
                             OSGetDBConfigPath(), OSGetServerDbPath(), OSGetZVQDirectory(),
                             OSGetAuditConfigPath(), OSGetZVMonitorConfigFile(nullptr)})
        all += path;
    GetLineFromServerConfigFileDup("Known:", out);
    OSGetHostnameNoDomain(name);
    all += out + std::string(name) + std::to_string(IsCurrentServerName(name, nullptr));
    OSGetOS(out);
    OSAlarm(0); // any thread may arm the alarm
    tm local;
    const time_t when = static_cast<int>(seed % 2000) * 1000003;
    return all + out + std::to_string(OSLocalTime(&when, &local)->tm_yday);
}

constexpr std::string (*kJobs[])(unsigned) = {conversions, strings,    mail,
                                              documents,   containers, machine};

// What the processes share.
struct Report {
    std::atomic<long> rounds, searches, wrong, growth, resident;
    std::atomic<long> lines[kMostWriters];
};

class Soak {
public:
    Soak(double seconds, unsigned processes, unsigned threads)
        : processes_(processes), threads_(threads), start_(Clock::now()),
          end_(start_ + std::chrono::milliseconds(long(seconds * 1000))),
          report_(new (mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE,
                            MAP_SHARED | MAP_ANONYMOUS, -1, 0)) Report{}) {
        std::filesystem::create_directory(folder_ / "conf");
        test::write_file(folder_ / "conf/zv.conf", "Known: value\nServer-directory: /db\n");
        test::write_file(counter_, std::string(sizeof(long), '\0'));
        std::string known;
        for (unsigned i = 0; i < kKnownLines; ++i)
            known += known_line(i);
        test::write_file(shared_, known);
        SetZVInstallPath((folder_ / "").c_str());
        InitializeSrvUtil();
        InitMbutilExt(ZV_EUC);
        OSInitializeCriticalSection(&section_);
        for (const auto job : kJobs)
            for (unsigned seed = 0; seed < kSeeds; ++seed)
                expected_.push_back(job(seed));
    }

    bool run() {
        std::vector<pid_t> children;
        for (unsigned process = 0; process < processes_; ++process) {
            children.push_back(fork());
            if (children.back() == 0)
                run_process(process), _exit(0);
        }
        bool ended_well = true;
        for (const pid_t child : children) {
            int status = 0;
            waitpid(child, &status, 0);
            ended_well = ended_well && status == 0;
        }
        const long lost = lost_lines();
        long lines = 0;
        for (const auto& count : report_->lines)
            lines += count;
        printf("%.0f s, %u processes of %u threads: %ld results, %ld lines, %ld searches;\n"
               "%ld wrong, %ld lines lost; of %ld KiB, memory grew by %ld KiB at most\n",
               std::chrono::duration<double>(Clock::now() - start_).count(), processes_, threads_,
               report_->rounds.load(), lines, report_->searches.load(), report_->wrong.load(), lost,
               report_->resident.load(), report_->growth.load());
        return ended_well && lines > 0 && lost == 0 && report_->wrong == 0 && memory_is_flat();
    }

private:
    static std::string known_line(unsigned i) { return "known " + std::to_string(i) + "\n"; }
    static std::string line(unsigned writer, long number) {
        return std::to_string(writer) + " " + std::to_string(number) +
               std::string(size_t(number * 7 % 90), '.');
    }
    static long resident_kib() {
        std::ifstream statm("/proc/self/statm");
        long pages = 0;
        statm >> pages >> pages;
        return pages * (sysconf(_SC_PAGESIZE) / 1024);
    }

    void run_process(unsigned process) {
        std::vector<std::thread> threads;
        for (unsigned thread = 0; thread < threads_; ++thread)
            threads.emplace_back([=, this] { run_thread(process * threads_ + thread); });
        std::this_thread::sleep_until(start_ + (end_ - start_) / 5);
        const long warm = resident_kib();
        std::this_thread::sleep_until(end_ - (end_ - start_) / 50);
        const long grown = resident_kib() - warm;
        for (std::thread& thread : threads)
            thread.join();
        long most = report_->growth;
        while (grown > most && !report_->growth.compare_exchange_weak(most, grown))
            ;
        report_->resident = warm;
    }

    void run_thread(unsigned writer) {
        for (unsigned round = writer * 7; Clock::now() < end_; ++round) {
            const unsigned which = round * 11 % unsigned(expected_.size());
            check(kJobs[which / kSeeds](which % kSeeds) == expected_[which], "result");
            ++report_->rounds;
            if (round % 16 == 0)
                share(writer, round);
        }
    }

    // The locks keep out other processes, the section other threads.
    void share(unsigned writer, unsigned round) {
        const std::string own = line(writer, report_->lines[writer]);
        const unsigned known = round / 16 % kKnownLines;
        OSEnterCriticalSection(&section_);
        check(OSAppendLineToFile(shared_.c_str(), own.c_str()) == 0, "append");
        const int found = OSFindLineInFile(shared_.c_str(), known_line(known).c_str());
        check(found == int(known) + 1, "search");
        count_under_lock();
        OSLeaveCriticalSection(&section_);
        ++report_->lines[writer], ++report_->searches;
    }

    void count_under_lock() {
        const int fd = open(counter_.c_str(), O_RDWR);
        long count = 0;
        check(OSLockFileFd(fd, ZV_LOCK_WRITE, 1) &&
                  pread(fd, &count, sizeof count, 0) == sizeof count,
              "lock");
        ++count;
        check(pwrite(fd, &count, sizeof count, 0) == sizeof count && OSUnLockFileFd(fd), "unlock");
        close(fd);
    }

    void check(bool holds, const char* what) {
        if (holds)
            return;
        fprintf(stderr, "soak: a wrong %s\n", what);
        ++report_->wrong;
    }

    // Reads the shared file and the counter: each writer's lines in order, whole, and no other.
    long lost_lines() const {
        std::vector<long> next(kMostWriters);
        std::ifstream in(shared_);
        std::string text;
        for (unsigned i = 0; i < kKnownLines; ++i)
            std::getline(in, text);
        long strays = 0, count = 0;
        while (std::getline(in, text)) {
            const auto writer = strtoul(text.c_str(), nullptr, 10) % kMostWriters;
            text == line(unsigned(writer), next[writer]) ? ++next[writer] : ++strays;
        }
        std::ifstream(counter_, std::ios::binary)
            .read(reinterpret_cast<char*>(&count), sizeof count);
        for (unsigned writer = 0; writer < kMostWriters; ++writer) {
            strays += std::abs(report_->lines[writer] - next[writer]);
            count -= report_->lines[writer];
        }
        return strays + std::abs(count);
    }

    bool memory_is_flat() const {
#if defined __SANITIZE_THREAD__ || defined __SANITIZE_ADDRESS__
        return true; // Theirs is not.
#else
        return report_->growth <= kMostGrowth;
#endif
    }

    const test::Folder folder_;
    const std::string shared_ = folder_ / "shared", counter_ = folder_ / "counter";
    const unsigned processes_, threads_;
    const Clock::time_point start_, end_;
    Report* const report_;
    pthread_mutex_t section_;
    std::vector<std::string> expected_;
};

} // namespace

int main(int count, char** arguments) {
    const auto argument = [&](int i, const char* otherwise) {
        return std::stod(i < count ? arguments[i] : otherwise);
    };
    const auto processes = unsigned(argument(2, "8")), threads = unsigned(argument(3, "4"));
    return Soak(argument(1, "600"), processes, threads).run() ? 0 : 1;
}
