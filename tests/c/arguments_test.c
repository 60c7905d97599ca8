// SPDX-License-Identifier: Apache-2.0
// Arguments that no function can take: each gives its code and a line about it, and nothing
// changes.
#include <stdint.h>

#include "camera.h"

#define CHECK_FAILS(call, code, text)              \
  do {                                             \
    CHECK_NUMBER(call, code);                      \
    CHECK_TEXT(framequilt_last_error(NULL), text); \
  } while (0)

#define SESSION_NULL "session is a null pointer: give one that is not"

static void nullPointers(void) {
  framequilt_session* session = openJoined();
  framequilt_frame frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  framequilt_result result = {.size = sizeof result};
  framequilt_view view = {.size = sizeof view};
  framequilt_state state = {.size = sizeof state};
  framequilt_rect rect = {0, 0, 1, 1};
  unsigned char byte = 0;
  const framequilt_options options = optionsFor(1);

  CHECK_FAILS(framequilt_init_options(NULL, sizeof(framequilt_options)), FRAMEQUILT_E_ARGUMENT,
              "options is a null pointer: give one that is not");
  framequilt_session* opened = session;
  CHECK_NUMBER(framequilt_open(NULL, &opened), FRAMEQUILT_E_ARGUMENT);
  CHECK(opened == NULL);
  CHECK_FAILS(framequilt_open(&options, NULL), FRAMEQUILT_E_ARGUMENT, SESSION_NULL);
  CHECK_FAILS(framequilt_stop(NULL), FRAMEQUILT_E_ARGUMENT, SESSION_NULL);
  CHECK_FAILS(framequilt_get_state(NULL, &state), FRAMEQUILT_E_ARGUMENT, SESSION_NULL);
  CHECK_NUMBER(framequilt_get_state(session, NULL), FRAMEQUILT_E_ARGUMENT);
  CHECK_FAILS(framequilt_add(NULL, &frame, &result), FRAMEQUILT_E_ARGUMENT, SESSION_NULL);
  CHECK_FAILS(framequilt_add(session, NULL, &result), FRAMEQUILT_E_ARGUMENT,
              "frame is a null pointer: give one that is not");
  CHECK_FAILS(framequilt_add(session, &frame, NULL), FRAMEQUILT_E_ARGUMENT,
              "result is a null pointer: give one that is not");
  CHECK_TEXT(framequilt_last_error(session), "result is a null pointer: give one that is not");
  CHECK_NUMBER(framequilt_view_mosaic(NULL, &view), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_view_mosaic(session, NULL), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_save_mosaic(NULL, "x.png"), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_save_mosaic(session, NULL), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_steady_box(NULL, &rect), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_steady_box(session, NULL), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_copy_region(NULL, &rect, &byte, 0, 1), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_copy_region(session, NULL, &byte, 0, 1), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_copy_region(session, &rect, NULL, 0, 1), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_reason_words(1, NULL), FRAMEQUILT_E_ARGUMENT);
  char text[8];
  CHECK_NUMBER(framequilt_explain(NULL, text, sizeof text), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_explain(&result, NULL, 8), FRAMEQUILT_E_ARGUMENT);
  CHECK_NUMBER(framequilt_explain(&result, text, 0), FRAMEQUILT_E_ARGUMENT);
  // No frame was taken meanwhile.
  CHECK_NUMBER(addFrame(session, &frame).frame, 2);
  closeSession(session);
}

// Too small by one, and what stands in memory that nobody has set.
static void sizesOfStructs(void) {
  framequilt_session* session = openJoined();
  framequilt_frame frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  framequilt_options options = optionsFor(1);
  const size_t wrong[] = {0, 1, SIZE_MAX};
  for (size_t i = 0; i < sizeof wrong / sizeof wrong[0] + 1; ++i) {
    const int byOne = i == sizeof wrong / sizeof wrong[0];
    framequilt_result result = {.size = byOne ? sizeof result - 1 : wrong[i]};
    framequilt_view view = {.size = byOne ? sizeof view - 1 : wrong[i]};
    framequilt_state state = {.size = byOne ? sizeof state - 1 : wrong[i]};
    framequilt_words words = {.size = byOne ? sizeof words - 1 : wrong[i]};
    CHECK_NUMBER(framequilt_add(session, &frame, &result), FRAMEQUILT_E_SIZE);
    CHECK_NUMBER(framequilt_view_mosaic(session, &view), FRAMEQUILT_E_SIZE);
    CHECK_NUMBER(framequilt_get_state(session, &state), FRAMEQUILT_E_SIZE);
    CHECK_NUMBER(framequilt_reason_words(1, &words), FRAMEQUILT_E_SIZE);
    framequilt_frame bad = frame;
    bad.size = byOne ? sizeof bad - 1 : wrong[i];
    result.size = sizeof result;
    CHECK_NUMBER(framequilt_add(session, &bad, &result), FRAMEQUILT_E_SIZE);
    framequilt_session* none = NULL;
    options.size = byOne ? sizeof options - 1 : wrong[i];
    CHECK_NUMBER(framequilt_open(&options, &none), FRAMEQUILT_E_SIZE);
    CHECK_NUMBER(framequilt_init_options(&options, options.size), FRAMEQUILT_E_SIZE);
  }
  options.size = 3;
  framequilt_session* none = NULL;
  CHECK_FAILS(framequilt_open(&options, &none), FRAMEQUILT_E_SIZE,
              "options has a size of 3 bytes, not 88: set size to the sizeof of the struct");
  CHECK_NUMBER(addFrame(session, &frame).frame, 2);
  closeSession(session);
}

// As a later version of the header may have them.
typedef struct LargerOptions {
  framequilt_options known;
  int64_t added[2];
} LargerOptions;
typedef struct LargerFrame {
  framequilt_frame known;
  int64_t added;
} LargerFrame;
typedef struct LargerResult {
  framequilt_result known;
  int64_t added;
} LargerResult;

static void largerStructs(void) {
  LargerOptions options;
  memset(&options, 0xFF, sizeof options);
  CHECK_NUMBER(framequilt_init_options(&options.known, sizeof options), FRAMEQUILT_OK);
  CHECK_NUMBER((long long)options.known.size, (long long)sizeof options);
  CHECK_NUMBER(options.added[0] | options.added[1], 0);
  CHECK_NUMBER(options.known.corner_budget, 8);
  options.known.rows = kRows;
  options.known.cols = kCols;
  options.known.channels = 1;
  options.added[1] = 1;
  framequilt_session* session = NULL;
  CHECK_FAILS(framequilt_open(&options.known, &session), FRAMEQUILT_E_SIZE,
              "options uses members that this library does not have: take a newer one");
  options.added[1] = 0;
  session = openWith(&options.known);

  LargerFrame frame = {.known = frameAt(100, 100, FRAMEQUILT_GRAY), .added = 5};
  frame.known.size = sizeof frame;
  LargerResult result = {.known = {.size = sizeof result}, .added = 5};
  CHECK_NUMBER(framequilt_add(session, &frame.known, &result.known), FRAMEQUILT_E_SIZE);
  CHECK_NUMBER(result.added, 5);
  frame.added = 0;
  CHECK_NUMBER(framequilt_add(session, &frame.known, &result.known), FRAMEQUILT_OK);
  CHECK_NUMBER(result.added, 0);
  CHECK_NUMBER((long long)result.known.size, (long long)sizeof result);
  closeSession(session);
}

static framequilt_code opening(framequilt_options options) {
  framequilt_session* session = NULL;
  const framequilt_code code = framequilt_open(&options, &session);
  CHECK(session == NULL);
  framequilt_close(session);
  return code;
}

static void optionsOutOfRange(void) {
  framequilt_options options = optionsFor(1);
  options.criterion = 2;
  CHECK_FAILS(opening(options), FRAMEQUILT_E_OPTION, "criterion has to be 0 to 1, not 2");
  options = optionsFor(1);
  options.backend = -1;
  CHECK_FAILS(opening(options), FRAMEQUILT_E_OPTION, "backend has to be 0 to 2, not -1");
  options = optionsFor(2);
  CHECK_FAILS(opening(options), FRAMEQUILT_E_OPTION,
              "channels has to be 3 (colour) or 1 (gray), not 2");
  options = optionsFor(1);
  options.rows = -5;
  CHECK_FAILS(opening(options), FRAMEQUILT_E_OPTION,
              "rows and cols have to be the size of the frames, not -5 x 320");
  options = optionsFor(1);
  options.backend = FRAMEQUILT_BACKEND_OPENCL;
  CHECK_NUMBER(opening(options), FRAMEQUILT_E_NO_OPENCL);
  options.kernel_file = "/no/such/file";
  CHECK_NUMBER(opening(options), FRAMEQUILT_E_NO_OPENCL);
}

static void framesThatDoNotFit(void) {
  framequilt_session* session = openJoined();
  framequilt_result result = {.size = sizeof result};
  framequilt_frame frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  frame.channels = 2;
  CHECK_FAILS(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME,
              "the frame has 2 channels, its order has 1: give both alike");
  frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  frame.order = 4;
  CHECK_FAILS(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME,
              "order of the frame has to be 0 to 3, not 4");
  frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  frame.rows = kRows + 1;
  CHECK_FAILS(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME,
              "frame 2 has 320 x 241 pixels, the session's frames have 320 x 240 pixels: give "
              "frames of one size");
  frame.rows = -kRows;
  CHECK_NUMBER(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME);
  frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  frame.stride_bytes = kCols - 1;
  CHECK_FAILS(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME,
              "frame 2 has rows of 320 bytes that begin every 319 bytes: give the bytes from row "
              "to row");
  frame.stride_bytes = SIZE_MAX / 4;
  CHECK_NUMBER(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME);
  frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  frame.pixels = NULL;
  CHECK_FAILS(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME,
              "frame 2 has no pixels: give a pointer to them");
  frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  frame.reserved = 1;
  CHECK_FAILS(framequilt_add(session, &frame, &result), FRAMEQUILT_E_FRAME,
              "reserved of the frame has to be 0, not 1");
  frame.reserved = 0;
  CHECK_NUMBER(addFrame(session, &frame).frame, 2);
  closeSession(session);
}

static void regionsWithoutRoom(void) {
  framequilt_session* session = openJoined();
  unsigned char pixels[20];
  framequilt_rect region = {0, 0, 5, 4};
  CHECK_NUMBER(framequilt_copy_region(session, &region, pixels, 0, 20), FRAMEQUILT_OK);
  CHECK_FAILS(framequilt_copy_region(session, &region, pixels, 0, 19), FRAMEQUILT_E_ARGUMENT,
              "the region has 4 rows, one every 5 bytes, more than pixels_bytes, 19, has room for: "
              "give more");
  CHECK_FAILS(framequilt_copy_region(session, &region, pixels, 4, 20), FRAMEQUILT_E_ARGUMENT,
              "the region has rows of 5 bytes, more than stride_bytes, 4: make that larger");
  CHECK_NUMBER(framequilt_copy_region(session, &region, pixels, SIZE_MAX / 2, 20),
               FRAMEQUILT_E_ARGUMENT);
  region.width = INT32_MAX;
  region.height = INT32_MAX;
  CHECK_NUMBER(framequilt_copy_region(session, &region, pixels, 0, 20), FRAMEQUILT_E_ARGUMENT);
  region.width = -1;
  CHECK_FAILS(framequilt_copy_region(session, &region, pixels, 0, 20), FRAMEQUILT_E_ARGUMENT,
              "the region has a negative size: give its top-left corner, width and height");
  // They are no errors of the session, which another thread may be using.
  CHECK_TEXT(framequilt_last_error(session), "");
  closeSession(session);
}

static void wordsAndNames(void) {
  framequilt_words words = {.size = sizeof words};
  CHECK_NUMBER(framequilt_reason_words(FRAMEQUILT_MOVED_TOO_FAR, &words), FRAMEQUILT_OK);
  CHECK_TEXT(words.reason, "moved too far");
  CHECK_TEXT(words.quantity, "overlap");
  CHECK_TEXT(words.unit, "%");
  CHECK_TEXT(words.relation, "needs more than");
  CHECK_TEXT(words.advice, "slow down or take frames more often");
  CHECK_NUMBER(framequilt_reason_words(FRAMEQUILT_NO_REASON, &words), FRAMEQUILT_OK);
  CHECK_TEXT(words.reason, "");
  CHECK_TEXT(words.advice, "");
  CHECK_FAILS(framequilt_reason_words(9, &words), FRAMEQUILT_E_ARGUMENT,
              "reason has to be 0 to 8, not 9");
  CHECK_NUMBER(framequilt_reason_words(-1, &words), FRAMEQUILT_E_ARGUMENT);
  framequilt_result result = {.size = sizeof result, .reason = 9};
  char text[FRAMEQUILT_EXPLANATION_BYTES];
  CHECK_NUMBER(framequilt_explain(&result, text, sizeof text), FRAMEQUILT_E_ARGUMENT);

  CHECK_TEXT(framequilt_code_name(FRAMEQUILT_OK), "FRAMEQUILT_OK");
  CHECK_TEXT(framequilt_code_name(FRAMEQUILT_E_ENGINE), "FRAMEQUILT_E_ENGINE");
  CHECK_TEXT(framequilt_code_name(14), "unknown code");
  CHECK_TEXT(framequilt_code_name(-1), "unknown code");

  CHECK_TEXT(framequilt_version_text(), FRAMEQUILT_EXPECTED_VERSION);
  int major = 0, minor = 0, patch = 0;
  sscanf(framequilt_version_text(), "%d.%d.%d", &major, &minor, &patch);
  CHECK_NUMBER(framequilt_version_number(), major * 10000 + minor * 100 + patch);
}

// What programs that are already compiled have.
static void structsKeepTheirShape(void) {
  CHECK_NUMBER((long long)sizeof(framequilt_options), 88);
  CHECK_NUMBER((long long)offsetof(framequilt_options, kernel_file), 48);
  CHECK_NUMBER((long long)sizeof(framequilt_frame), 56);
  CHECK_NUMBER((long long)offsetof(framequilt_frame, hint_x), 44);
  CHECK_NUMBER((long long)sizeof(framequilt_result), 248);
  CHECK_NUMBER((long long)offsetof(framequilt_result, placement), 48);
  CHECK_NUMBER((long long)offsetof(framequilt_result, matches), 104);
  CHECK_NUMBER((long long)offsetof(framequilt_result, sharpness), 224);
  CHECK_NUMBER((long long)sizeof(framequilt_view), 56);
  CHECK_NUMBER((long long)offsetof(framequilt_view, box), 40);
  CHECK_NUMBER((long long)sizeof(framequilt_state), 32);
  CHECK_NUMBER((long long)sizeof(framequilt_words), 48);
}

int main(int count, char** arguments) {
  static const TestCase cases[] = {
      {"nullPointers", nullPointers},
      {"sizesOfStructs", sizesOfStructs},
      {"largerStructs", largerStructs},
      {"optionsOutOfRange", optionsOutOfRange},
      {"framesThatDoNotFit", framesThatDoNotFit},
      {"regionsWithoutRoom", regionsWithoutRoom},
      {"wordsAndNames", wordsAndNames},
      {"structsKeepTheirShape", structsKeepTheirShape},
  };
  paintScene();
  return runCases(cases, sizeof cases / sizeof cases[0], count > 1 ? arguments[1] : NULL);
}
