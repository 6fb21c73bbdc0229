/*
 * solve_tape TAPE [--exact]: solves the session of a tape (tape.h) and prints its vector. With
 * --exact all digits are printed, so that another program can read the very same numbers.
 *
 * Exit code 0 if there is a vector. To build it with an installed library:
 *     cc -std=c99 solve_tape.c tape.c -o solve_tape $(pkg-config --cflags --libs VornelBlCore) -lm
 */
#include <VornelBlCore.h>
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "tape.h"

struct Solution {
    int mode;           /* solve model */
    double vector[3];   /* rover minus base, ECEF metres */
    double variance[9]; /* covariance of the vector by rows, m^2 */
};

/* The pointers that the queries of a solution take; what is not printed goes to `rest`. */
#define SOLUTION(s, dof, rest)                                                                   \
    &(s)->mode, &(s)->vector[0], &(s)->vector[1], &(s)->vector[2], &(rest)[0], &(rest)[1],       \
        &(rest)[2], dof, &(rest)[3], &(s)->variance[0], &(s)->variance[1], &(s)->variance[2],    \
        &(s)->variance[3], &(s)->variance[4], &(s)->variance[5], &(s)->variance[6],              \
        &(s)->variance[7], &(s)->variance[8], &(rest)[4], &(rest)[5], &(rest)[6], &(rest)[7],    \
        &(rest)[8], &(rest)[9], &(rest)[10], &(rest)[11], &(rest)[12], &(rest)[13], &(rest)[14], \
        &(rest)[15], &(rest)[16]

/* The last fixed solution, which the run was after, or the last float solution, or the triple
 * difference. Says which; NULL when there is none. */
static const char* GetBest(struct Solution* s) {
    double rest[17];
    int dof;
    if (GetFixedSolBaseData(GetFixedSolNum() - 1, SOLUTION(s, &dof, rest)) == 1) {
        return "fixed";
    }
    if (GetFloatSolBaseData(GetFloatSolNum() - 1, SOLUTION(s, &dof, rest)) == 1) {
        return "float";
    }
    return GetTripDiffSol(SOLUTION(s, &dof, rest)) == 1 && s->mode != 0 ? "triple difference"
                                                                        : NULL;
}

int main(int argc, char** argv) {
    const int exact = argc == 3 && strcmp(argv[2], "--exact") == 0;
    const char* line = exact ? "%c %.17g +- %.17g m\n" : "%c %14.4f +- %.4f m\n";
    struct Solution s;
    const char* kind;
    int status = 0, i;
    FILE* tape;
    if (argc != 2 + exact) {
        fprintf(stderr, "usage: solve_tape TAPE [--exact]\n");
        return 2;
    }
    tape = fopen(argv[1], "r");
    if (tape == NULL) {
        perror(argv[1]);
        return 2;
    }
    PlayTape(tape);
    fclose(tape);
    if (StartProcess(&status) == 0) {
        fprintf(stderr, "solve_tape: an error inside the engine, after status %d\n", status);
        return EXIT_FAILURE;
    }
    kind = GetBest(&s);
    if (kind == NULL) {
        printf("status %d, no solution\n", status);
    } else {
        printf("status %d, %s solution of model %d\n", status, kind, s.mode);
        for (i = 0; i < 3; ++i) {
            printf(line, "XYZ"[i], s.vector[i], sqrt(s.variance[4 * i]));
        }
    }
    DiposeProcess();
    return kind == NULL ? EXIT_FAILURE : EXIT_SUCCESS;
}
