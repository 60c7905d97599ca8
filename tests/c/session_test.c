// SPDX-License-Identifier: Apache-2.0
// Opening, stopping, saving, and the functions that a session calls.
#include <stdatomic.h>

#include "camera.h"

// Counted on the engine's threads, too, while no call is under way.
typedef struct Lines {
  atomic_int count;
  atomic_int searches;
  atomic_int ends;
} Lines;

static void countLine(const char* line, size_t length, void* user) {
  Lines* lines = user;
  ++lines->count;
  CHECK_NUMBER((long long)strlen(line), (long long)length);
  lines->searches += strcmp(line, "imageMosaicFun in") == 0;
  lines->ends += strstr(line, "pthread_join") != NULL;
}

static void linesGoToTheLog(void) {
  Lines lines = {0};
  framequilt_options options = optionsFor(1);
  options.log = countLine;
  options.log_user = &lines;
  framequilt_session* session = openWith(&options);
  addGray(session, 100, 100);
  CHECK_NUMBER(lines.searches, 0);
  addGray(session, 200, 140);
  addGray(session, 240, 200);
  CHECK_NUMBER(lines.searches, 2);
  CHECK_NUMBER(lines.ends, 0);
  closeSession(session);
  CHECK_NUMBER(lines.ends, 2);

  // A later session without a log tells nobody; the test of this program sees that it prints
  // nothing.
  const int before = lines.count;
  session = openJoined();
  closeSession(session);
  CHECK_NUMBER(lines.count, before);
}

static void oneSessionAtATime(void) {
  Lines lines = {0}, otherLines = {0};
  framequilt_options options = optionsFor(1);
  options.log = countLine;
  options.log_user = &lines;
  framequilt_session* session = openWith(&options);
  addGray(session, 100, 100);

  options.log_user = &otherLines;
  framequilt_session* other = session;
  CHECK_NUMBER(framequilt_open(&options, &other), FRAMEQUILT_E_SESSION_OPEN);
  CHECK(other == NULL);
  CHECK_TEXT(framequilt_last_error(NULL), "another session is open: stop it first");
  // The open one is not disturbed, and keeps its log.
  CHECK_TEXT(framequilt_last_error(session), "");
  CHECK_NUMBER(addGray(session, 200, 140).verdict, FRAMEQUILT_JOINED);
  CHECK_NUMBER(lines.searches, 1);
  CHECK_NUMBER(otherLines.count, 0);

  CHECK_NUMBER(framequilt_stop(session), FRAMEQUILT_OK);
  CHECK_NUMBER(framequilt_stop(session), FRAMEQUILT_OK);
  other = openWith(&options);
  addGray(other, 100, 100);
  addGray(other, 200, 140);
  CHECK_NUMBER(otherLines.searches, 1);
  CHECK_NUMBER(lines.searches, 1);

  // The stopped one takes no frame, and keeps its mosaic.
  const framequilt_frame frame = frameAt(240, 200, FRAMEQUILT_GRAY);
  framequilt_result result = {.size = sizeof result};
  CHECK_NUMBER(framequilt_add(session, &frame, &result), FRAMEQUILT_E_STOPPED);
  CHECK_TEXT(framequilt_last_error(session), "the session was stopped: open another one");
  CHECK_TEXT(framequilt_last_error(other), "");
  const framequilt_view mine = viewOf(session), others = viewOf(other);
  CHECK(mine.pixels != others.pixels);
  for (int r = 0; r < mine.rows; ++r) {
    CHECK(memcmp(mine.pixels + (size_t)r * mine.stride_bytes,
                 others.pixels + (size_t)r * others.stride_bytes, (size_t)mine.cols) == 0);
  }
  closeSession(other);
  closeSession(session);
  closeSession(NULL);
}

typedef struct Steps {
  framequilt_session* session;
  int32_t stages[8];
  int count;
  int32_t cancelled;  // The stage at which the frame is cancelled; -1: none.
} Steps;

static int32_t step(int32_t stage, int64_t frame, void* user) {
  Steps* steps = user;
  CHECK_NUMBER(frame, 1);
  steps->stages[steps->count++] = stage;
  // Whatever it calls finds the session at work.
  framequilt_view view = {.size = sizeof view};
  CHECK_NUMBER(framequilt_stop(steps->session), FRAMEQUILT_E_BUSY);
  CHECK_NUMBER(framequilt_close(steps->session), FRAMEQUILT_E_BUSY);
  CHECK_NUMBER(framequilt_view_mosaic(steps->session, &view), FRAMEQUILT_E_BUSY);
  CHECK_TEXT(framequilt_last_error(NULL),
             "another call on the session is under way: wait until it returns");
  return stage != steps->cancelled;
}

// The first frame is told of, too: its number is none that `step` expects.
static int32_t stepOfSecond(int32_t stage, int64_t frame, void* user) {
  return frame == 0 ? 1 : step(stage, frame, user);
}

static void progressIsToldAndCancels(void) {
  Steps steps = {.cancelled = FRAMEQUILT_STITCHING};
  framequilt_options options = optionsFor(1);
  options.progress = stepOfSecond;
  options.progress_user = &steps;
  steps.session = openWith(&options);
  addGray(steps.session, 100, 100);
  CHECK_NUMBER(addGray(steps.session, 200, 140).verdict, FRAMEQUILT_CANCELLED);
  CHECK_NUMBER(steps.count, 2);
  steps.cancelled = -1;
  steps.count = 0;
  CHECK_NUMBER(addGray(steps.session, 200, 140).verdict, FRAMEQUILT_JOINED);
  CHECK_NUMBER(steps.count, 3);
  CHECK_NUMBER(steps.stages[0], FRAMEQUILT_COPYING);
  CHECK_NUMBER(steps.stages[1], FRAMEQUILT_STITCHING);
  CHECK_NUMBER(steps.stages[2], FRAMEQUILT_DONE);
  CHECK_TEXT(framequilt_last_error(steps.session), "");
  closeSession(steps.session);
}

static void aMosaicIsNeeded(void) {
  framequilt_session* session = openGray();
  framequilt_view view = {.size = sizeof view};
  framequilt_rect box = {1, 2, 3, 4};
  addGray(session, 100, 100);
  CHECK_NUMBER(framequilt_view_mosaic(session, &view), FRAMEQUILT_E_EMPTY);
  CHECK_TEXT(framequilt_last_error(session),
             "there is no mosaic before two frames have joined: add more frames");
  CHECK(view.pixels == NULL);
  CHECK_NUMBER(framequilt_save_mosaic(session, "none.png"), FRAMEQUILT_E_EMPTY);
  CHECK_NUMBER(framequilt_steady_box(session, &box), FRAMEQUILT_OK);
  CHECK_NUMBER(box.width + box.height, 0);
  closeSession(session);
}

static void mosaicsAreSaved(void) {
  framequilt_session* session = openJoined();
  CHECK_NUMBER(framequilt_save_mosaic(session, "c_session_test.PNG"), FRAMEQUILT_OK);
  unsigned char start[26] = {0};
  FILE* file = fopen("c_session_test.PNG", "rb");
  CHECK(file != NULL && fread(start, 1, sizeof start, file) == sizeof start);
  if (file != NULL) fclose(file);
  remove("c_session_test.PNG");
  // The signature; then size, 8 bits and gray.
  const unsigned char expected[26] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n', 0,
                                      0,    0,   13,  'I', 'H',  'D',  'R',  0,    0,
                                      1,    164, 0,   0,   1,    24,   8,    0};
  CHECK(memcmp(start, expected, sizeof start) == 0);

  CHECK_NUMBER(framequilt_save_mosaic(session, "mosaic.jpg"), FRAMEQUILT_E_FILE);
  CHECK_TEXT(framequilt_last_error(session), "'mosaic.jpg' names no PNG file: end it with .png");
  CHECK_NUMBER(framequilt_save_mosaic(session, "no/such/mosaic.png"), FRAMEQUILT_E_FILE);
  CHECK_TEXT(framequilt_last_error(session),
             "'no/such/mosaic.png' could not be written (No such file or directory): choose a "
             "folder that you may write to, with room");
  CHECK_NUMBER(addGray(session, 240, 200).verdict, FRAMEQUILT_JOINED);
  closeSession(session);
}

int main(int count, char** arguments) {
  static const TestCase cases[] = {
      {"linesGoToTheLog", linesGoToTheLog},
      {"oneSessionAtATime", oneSessionAtATime},
      {"progressIsToldAndCancels", progressIsToldAndCancels},
      {"aMosaicIsNeeded", aMosaicIsNeeded},
      {"mosaicsAreSaved", mosaicsAreSaved},
  };
  paintScene();
  return runCases(cases, sizeof cases / sizeof cases[0], count > 1 ? arguments[1] : NULL);
}
