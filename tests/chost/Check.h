/* Part of libQXRecordSet. MIT licence, see LICENSE.
 *
 * What the C hosts check with: a claim that does not hold is named by its line, and counts.
 */

#ifndef QXRECORDSET_TESTS_CHOST_CHECK_H
#define QXRECORDSET_TESTS_CHOST_CHECK_H

#include <stdio.h>
#include <string.h>

static int nFailed = 0;

static void Check(int bHolds, const char* szClaim, const char* szFile, int nLine) {
  if (!bHolds) {
    fprintf(stderr, "%s:%d: does not hold: %s\n", szFile, nLine, szClaim);
    nFailed = 1;
  }
}
#define CHECK(claim) Check((claim) ? 1 : 0, #claim, __FILE__, __LINE__)

static int SameText(const char* a, const char* b) { return a != NULL && strcmp(a, b) == 0; }

#endif /* QXRECORDSET_TESTS_CHOST_CHECK_H */
