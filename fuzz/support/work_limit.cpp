#include "support/work_limit.h"

#include "korengine.h"
#include "kormodel_refcheck.h"
#include "korplatform.h"

#include <cerrno>
#include <csignal>

#include <sys/resource.h>

// Linked in the place of the program's functions of the same names; __real_ are those of the program.
#define KOR_WRAPPED(name) __asm__("__wrap_" name)
#define KOR_REAL(name) __asm__("__real_" name)

namespace kor_fuzz {

void real_open_sector(const kor::EngineSector& sector)
    KOR_REAL("_ZN3kor16EngineOpenSectorERKNS_12EngineSectorE");
void real_sector_propagator(int ix, int iy, int iz, kor::CMatrix& r)
    KOR_REAL("_ZN3kor22EngineSectorPropagatorEiiiRNS_7CMatrixE");

void open_sector(const kor::EngineSector& sector)
    KOR_WRAPPED("_ZN3kor16EngineOpenSectorERKNS_12EngineSectorE");
void sector_propagator(int ix, int iy, int iz, kor::CMatrix& r)
    KOR_WRAPPED("_ZN3kor22EngineSectorPropagatorEiiiRNS_7CMatrixE");
int open_plot(const char* script_name) KOR_WRAPPED("_ZN3kor18platform_open_plotEPKc");
void run_reference_checks() KOR_WRAPPED("_ZN3kor27KORModel_RunReferenceChecksEv");

namespace {

constexpr rlim_t longest_file = 4 << 20;
constexpr double most_work = 3e7; // multiplications of a session, about

double g_work = 0;
double g_work_of_a_voxel = 0;
int g_dimension = 0;

void limit_files(rlim_t length) {
    rlimit limit;
    getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = length < limit.rlim_max ? length : limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

void open_sector(const kor::EngineSector& sector) {
    const double n = sector.system.n;
    g_dimension = sector.system.n;
    g_work_of_a_voxel = n * n * n * sector.samples.count;
    g_work += g_work_of_a_voxel;
    if (g_work <= most_work)
        real_open_sector(sector);
}

void sector_propagator(int ix, int iy, int iz, kor::CMatrix& r) {
    if (g_work <= most_work) {
        real_sector_propagator(ix, iy, iz, r);
        g_work += g_work_of_a_voxel;
        return;
    }
    for (int row = 1; row <= g_dimension; ++row)
        for (int column = 1; column <= g_dimension; ++column)
            r[row][column] = kor::Complex2{{0.0, row == column ? 1.0 : 0.0, 0.0}};
}

int open_plot(const char*) {
    return ENOENT;
}

void run_reference_checks() {}

WorkLimit::WorkLimit() {
    g_work = 0;
    std::signal(SIGXFSZ, SIG_IGN);
    limit_files(longest_file);
}

WorkLimit::~WorkLimit() {
    limit_files(RLIM_INFINITY);
}

} // namespace kor_fuzz
