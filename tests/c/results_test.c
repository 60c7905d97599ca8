// SPDX-License-Identifier: Apache-2.0
// What becomes of frames, and the mosaic that they make.
#include <math.h>

#include "camera.h"

static void checkPoint(framequilt_point point, int x, int y) {
  CHECK_NUMBER(point.x, x);
  CHECK_NUMBER(point.y, y);
}

static void checkRect(framequilt_rect rect, int x, int y, int width, int height) {
  CHECK_NUMBER(rect.x, x);
  CHECK_NUMBER(rect.y, y);
  CHECK_NUMBER(rect.width, width);
  CHECK_NUMBER(rect.height, height);
}

static void framesJoin(void) {
  framequilt_session* session = openGray();
  const framequilt_result first = addGray(session, 100, 100);
  CHECK_NUMBER(first.verdict, FRAMEQUILT_WAITING);
  CHECK_NUMBER(first.reason, FRAMEQUILT_NO_REASON);
  CHECK_NUMBER(first.frame, 0);
  CHECK_NUMBER(first.matches.known, 0);
  CHECK_NUMBER(first.has_offset, 0);

  const framequilt_result second = addGray(session, 200, 140);
  CHECK_NUMBER(second.verdict, FRAMEQUILT_JOINED);
  CHECK_NUMBER(second.frame, 1);
  CHECK_NUMBER((long long)second.size, (long long)sizeof second);
  checkPoint(second.placement, 100, 40);
  checkPoint(second.mosaic_position, 100, 40);
  checkPoint(second.growth_shift, 0, 0);
  checkRect(second.changed, 0, 0, kCols + 100, kRows + 40);
  CHECK_NUMBER(second.has_offset, 1);
  checkPoint(second.offset, 100, 40);
  CHECK(second.match_count >= 11);
  CHECK_NUMBER(second.matches.known, 1);
  CHECK(second.matches.value == second.match_count);
  CHECK(second.matches.limit == 11);
  CHECK_NUMBER(second.moved.known, 1);
  CHECK(second.moved.value == 31.25);
  CHECK_NUMBER(second.overlap.known, 1);
  CHECK(second.overlap.value == 68.75);
  CHECK(fabs(second.overlap.limit - 10) < 0.001);
  CHECK_NUMBER(second.change.known, 0);
  CHECK_NUMBER(second.brightness.known, 0);
  CHECK_NUMBER(second.sharpness.known, 0);
  CHECK_NUMBER(second.full, 0);

  // To the left and up: what lay in the view moves right and down.
  const framequilt_result third = addGray(session, 60, 70);
  CHECK_NUMBER(third.verdict, FRAMEQUILT_JOINED);
  checkPoint(third.placement, -40, -30);
  checkPoint(third.mosaic_position, 0, 0);
  checkPoint(third.growth_shift, 40, 30);
  checkRect(third.changed, 0, 0, kCols, kRows);
  closeSession(session);
}

static void overlapIsMeasured(void) {
  framequilt_options options = optionsFor(1);
  options.criterion = FRAMEQUILT_BY_OVERLAP;
  framequilt_session* session = openWith(&options);
  addGray(session, 100, 100);
  const framequilt_result joined = addGray(session, 200, 140);
  CHECK_NUMBER(joined.verdict, FRAMEQUILT_JOINED);
  CHECK_NUMBER(joined.brightness.known, 1);
  CHECK(joined.brightness.value < joined.brightness.limit);
  CHECK_NUMBER(joined.sharpness.known, 1);
  CHECK(joined.sharpness.value < joined.sharpness.limit);
  closeSession(session);

  options.criterion = FRAMEQUILT_BY_MOTION;
  options.dynamic_scene = 1;
  session = openWith(&options);
  addGray(session, 100, 100);
  CHECK_NUMBER(addGray(session, 200, 140).change.known, 1);
  closeSession(session);
}

static void framesAreRefused(void) {
  framequilt_session* session = openJoined();
  const framequilt_result still = addGray(session, 202, 142);
  CHECK_NUMBER(still.verdict, FRAMEQUILT_REFUSED);
  CHECK_NUMBER(still.reason, FRAMEQUILT_MOVED_TOO_LITTLE);
  CHECK(still.judged == still.moved.value);
  CHECK(still.limit == still.moved.limit);
  char text[FRAMEQUILT_EXPLANATION_BYTES];
  CHECK_NUMBER(framequilt_explain(&still, text, sizeof text), FRAMEQUILT_OK);
  CHECK_TEXT(text, "moved too little: moved by 0.8 %, needs more than 10 %");
  // Cut to the room there is.
  CHECK_NUMBER(framequilt_explain(&still, text, 6), FRAMEQUILT_OK);
  CHECK_TEXT(text, "moved");

  const framequilt_result away = addGray(session, 570, 0);
  CHECK_NUMBER(away.verdict, FRAMEQUILT_REFUSED);
  CHECK_NUMBER(away.reason, FRAMEQUILT_NO_OVERLAP);
  CHECK(away.judged == away.match_count);
  CHECK(away.limit == 11);
  CHECK_NUMBER(away.has_offset, 0);
  CHECK_NUMBER(away.moved.known, 0);

  // The session goes on from the last frame that was joined, which has nothing to explain.
  const framequilt_result joined = addGray(session, 240, 220);
  CHECK_NUMBER(joined.verdict, FRAMEQUILT_JOINED);
  checkPoint(joined.placement, 140, 120);
  CHECK_NUMBER(framequilt_explain(&joined, text, sizeof text), FRAMEQUILT_OK);
  CHECK_TEXT(text, "");
  closeSession(session);
}

static void aFirstFrameThatNothingJoinsGivesWay(void) {
  framequilt_session* session = openGray();
  framequilt_state state = {.size = sizeof state};
  addGray(session, 0, 0);
  CHECK_NUMBER(addGray(session, 570, 0).became_first, 0);
  CHECK_NUMBER(addGray(session, 570, 300).became_first, 0);
  CHECK_NUMBER(addGray(session, 500, 300).became_first, 1);
  CHECK_NUMBER(framequilt_get_state(session, &state), FRAMEQUILT_OK);
  CHECK_NUMBER(state.first_frame, 3);
  checkPoint(addGray(session, 420, 280).placement, -80, -20);
  closeSession(session);
}

static void aMosaicBecomesFull(void) {
  framequilt_options options = optionsFor(1);
  options.max_rows = options.max_cols = 100;
  framequilt_session* session = openWith(&options);
  addGray(session, 100, 100);
  const framequilt_result last = addGray(session, 200, 140);
  CHECK_NUMBER(last.verdict, FRAMEQUILT_JOINED);
  CHECK_NUMBER(last.full, 1);
  const framequilt_result refused = addGray(session, 240, 200);
  CHECK_NUMBER(refused.verdict, FRAMEQUILT_REFUSED);
  CHECK_NUMBER(refused.reason, FRAMEQUILT_MOSAIC_FULL);
  CHECK(refused.judged == 36000000);
  CHECK(refused.limit == 10000);
  CHECK_NUMBER(refused.matches.known, 0);
  closeSession(session);
}

static void hintsLimitTheSearch(void) {
  framequilt_session* session = openJoined();
  framequilt_frame frame = frameAt(280, 200, FRAMEQUILT_GRAY);
  const framequilt_result plain = addFrame(session, &frame);
  closeSession(session);
  session = openJoined();
  frame.has_hint = 1;
  frame.hint_x = 80;
  frame.hint_y = 60;
  const framequilt_result hinted = addFrame(session, &frame);
  CHECK_NUMBER(hinted.verdict, FRAMEQUILT_JOINED);
  checkPoint(hinted.placement, 180, 100);
  // The same corners, chosen in the overlap alone, where they all have a partner.
  CHECK(hinted.match_count > plain.match_count);
  closeSession(session);
}

static void theViewShowsTheFrames(void) {
  framequilt_session* session = openJoined();
  const framequilt_view view = viewOf(session);
  CHECK_NUMBER(view.rows, kRows + 40);
  CHECK_NUMBER(view.cols, kCols + 100);
  CHECK_NUMBER(view.channels, 1);
  CHECK(view.stride_bytes >= (size_t)view.cols);
  checkRect(view.box, 0, 0, kCols + 100, kRows + 40);
  // Where one frame lies alone.
  for (int r = 0; r < kRows; ++r) {
    CHECK(memcmp(view.pixels + (size_t)r * view.stride_bytes, &grayScene[100 + r][100], 80) == 0);
  }
  // Where none lies.
  CHECK_NUMBER(view.pixels[kCols + 50], 0);

  addGray(session, 60, 70);
  checkRect(viewOf(session).box, -40, -30, kCols + 140, kRows + 70);
  closeSession(session);
}

// The mosaic of the same frames, in `order`, as packed bytes to be released.
static unsigned char* colourMosaic(int32_t order, size_t* bytes) {
  const framequilt_options options = optionsFor(3);
  framequilt_session* session = openWith(&options);
  framequilt_frame frame = frameAt(100, 100, order);
  addFrame(session, &frame);
  frame = frameAt(200, 140, order);
  CHECK_NUMBER(addFrame(session, &frame).verdict, FRAMEQUILT_JOINED);
  framequilt_rect box = {0};
  CHECK_NUMBER(framequilt_steady_box(session, &box), FRAMEQUILT_OK);
  checkRect(box, 0, 0, kCols + 100, kRows + 40);
  *bytes = (size_t)box.width * (size_t)box.height * 3;
  unsigned char* pixels = malloc(*bytes);
  CHECK_NUMBER(framequilt_copy_region(session, &box, pixels, 0, *bytes), FRAMEQUILT_OK);
  closeSession(session);
  return pixels;
}

static void ordersOfPixelsAgree(void) {
  size_t bytes = 0, otherBytes = 0;
  unsigned char* withAlpha = colourMosaic(FRAMEQUILT_BGRA, &bytes);
  unsigned char* redFirstOne = colourMosaic(FRAMEQUILT_RGB, &otherBytes);
  CHECK(bytes == otherBytes && memcmp(withAlpha, redFirstOne, bytes) == 0);
  CHECK(memcmp(withAlpha, scene[100][100], 3) == 0);  // Blue comes first.
  CHECK(withAlpha[0] != withAlpha[2]);
  free(withAlpha);
  free(redFirstOne);
}

static void regionsAreCopied(void) {
  framequilt_session* session = openJoined();
  addGray(session, 60, 70);
  const framequilt_view view = viewOf(session);
  unsigned char copy[4][20];
  memset(copy, 7, sizeof copy);
  // Half of it outside of the box, at the left.
  const framequilt_rect region = {-45, -20, 10, 4};
  CHECK_NUMBER(framequilt_copy_region(session, &region, copy[0], 20, 70), FRAMEQUILT_OK);
  for (size_t r = 0; r < 4; ++r) {
    const unsigned char expected[5] = {0};
    CHECK(memcmp(copy[r], expected, 5) == 0);
    CHECK(memcmp(copy[r] + 5, view.pixels + (10 + r) * view.stride_bytes, 5) == 0);
    CHECK_NUMBER(copy[r][10], 7);
  }
  const framequilt_rect nothing = {0, 0, 0, 0};
  CHECK_NUMBER(framequilt_copy_region(session, &nothing, copy[0], 0, 0), FRAMEQUILT_OK);
  closeSession(session);
}

static void theStateIsTold(void) {
  framequilt_options options = optionsFor(3);
  options.scale = 2;
  framequilt_session* session = openWith(&options);
  framequilt_state state = {.size = sizeof state};
  CHECK_NUMBER(framequilt_get_state(session, &state), FRAMEQUILT_OK);
  CHECK_NUMBER(state.scale, 2);
  CHECK_NUMBER(state.channels, 3);
  CHECK_NUMBER(state.first_frame, 0);
  CHECK_TEXT(state.backend, "host");
  closeSession(session);
}

int main(int count, char** arguments) {
  static const TestCase cases[] = {
      {"framesJoin", framesJoin},
      {"overlapIsMeasured", overlapIsMeasured},
      {"framesAreRefused", framesAreRefused},
      {"aFirstFrameThatNothingJoinsGivesWay", aFirstFrameThatNothingJoinsGivesWay},
      {"aMosaicBecomesFull", aMosaicBecomesFull},
      {"hintsLimitTheSearch", hintsLimitTheSearch},
      {"theViewShowsTheFrames", theViewShowsTheFrames},
      {"ordersOfPixelsAgree", ordersOfPixelsAgree},
      {"regionsAreCopied", regionsAreCopied},
      {"theStateIsTold", theStateIsTold},
  };
  paintScene();
  return runCases(cases, sizeof cases / sizeof cases[0], count > 1 ? arguments[1] : NULL);
}
