/*
 * A session as a text file: the calls that hand it to the engine, written out. A tape holds names of
 * functions and their arguments, in the order of VornelBlCore.h, apart from each other by spaces or
 * line ends; # begins a comment that lasts to the end of the line. Arrays stand in place. Where the
 * function takes a count with arrays, the entries follow it one by one:
 *
 *     AddOneDelSat 1 7                        system, number
 *     MarkDelSatList 2                        count,
 *       1 7                                   then system and number of each
 *       8 24
 *     InputOneSatPreEphValue 0 1 7 220        component, system, number, count,
 *       2111 345600 -13247981.5               then week, seconds and value of each
 *       ...
 *     AddOneSatTrackInfo 0 1 7 0 0 0 0 0 0 1  all up to gapCount, then the gaps,
 *       2111 345600 2111 346000               start and end of each
 *     InputEpochObsData                       the rover, then the base:
 *       2111 345600 10                        week, seconds, count,
 *       3 22731911.5 22731912.25 119457632.125 93083201.5
 *       ...                                   then satellite number, P1, P2, L1, L2 of each
 */
#ifndef VORNEL_EXAMPLE_TAPE_H
#define VORNEL_EXAMPLE_TAPE_H

#include <stdio.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Makes all calls of a tape, up to its end. Ends the program with a message when something on it is
 * not understood, or when the engine could not do as told. */
void PlayTape(FILE* tape);

#ifdef __cplusplus
}
#endif

#endif
