// SPDX-License-Identifier: Apache-2.0
// Judges many made-up playbacks and prints how well their faults were found, as docs/diagnosis.md
// has it: codecreport_diagnose [FAULTY [HEALTHY [SEED]]]; with -v, also what was missed.
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <benchmarks/diagnosis/Diagnosis.h>

using android::test::Score;
using Cause = android::codecreport::Cause;

namespace {

void print(const char* what, const Score::Cell& cell) {
    printf("| %s | %d | %d | %.1f %% |\n", what, cell.all, cell.right,
           cell.all == 0 ? 0 : 100.0 * cell.right / cell.all);
}

void printConfusion(const Score& score) {
    printf("\n| injected \\ named |");
    for (int i = 0; i <= static_cast<int>(Cause::COUNT); ++i) {
        const bool none = i == static_cast<int>(Cause::COUNT);
        printf(" %s |", none ? "nothing" : inWords(static_cast<Cause>(i)));
    }
    printf("\n|---|");
    for (int i = 0; i <= static_cast<int>(Cause::COUNT); ++i) printf("---|");
    for (const auto& [truth, row] : score.confusion) {
        printf("\n| %s |", inWords(truth));
        for (int i = 0; i <= static_cast<int>(Cause::COUNT); ++i) {
            const auto count = row.find(static_cast<Cause>(i));
            printf(" %s |", count == row.end() ? "" : std::to_string(count->second).c_str());
        }
    }
    printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
    const bool verbose = argc > 1 && strcmp(argv[1], "-v") == 0;
    argv += verbose ? 1 : 0;
    argc -= verbose ? 1 : 0;
    const int faulty = argc > 1 ? atoi(argv[1]) : 2000;
    const int healthy = argc > 2 ? atoi(argv[2]) : 1000;
    std::mt19937 random(argc > 3 ? atoi(argv[3]) : 1);
    Score score;
    for (int i = 0; i < healthy; ++i) score.addHealthy(android::test::healthyScenario(random));
    for (int i = 0; i < faulty; ++i) score.addFaulty(android::test::faultyScenario(random));
    printf("| | number | right | |\n|---|---|---|---|\n");
    print("cause of faults of 200 ms or more", score.large);
    print("cause of shorter faults that were seen", score.small);
    print("pictures that stood 250 ms or more, found", score.standing);
    print("healthy playbacks without an incident", score.healthy);
    printf("\n%d faults were absorbed by buffers: nothing of them was to be seen.\n",
           score.absorbed);
    printConfusion(score);
    if (verbose) {
        for (const std::string& miss : score.misses) printf("\n%s\n", miss.c_str());
    }
}
