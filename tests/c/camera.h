// SPDX-License-Identifier: Apache-2.0
// A painted scene, a camera over it, and sessions that take its frames.
#pragma once

#include <framequilt/framequilt_c.h>
#include <stdlib.h>

#include "checks.h"

enum { kSceneRows = 560, kSceneCols = 900, kRows = 240, kCols = 320, kSquare = 6 };

// Blue, green, red and a fourth channel that says nothing.
static unsigned char scene[kSceneRows][kSceneCols][4];
// The same in another order of channels: red, green, blue.
static unsigned char redFirst[kSceneRows][kSceneCols][3];
static unsigned char grayScene[kSceneRows][kSceneCols];

// Random squares; no byte is 0.
static inline void paintScene(void) {
  uint32_t random = 7;
  for (int r = 0; r < kSceneRows; ++r) {
    for (int c = 0; c < kSceneCols; ++c) {
      const int top = r - r % kSquare;
      const int left = c - c % kSquare;
      for (int k = 0; k < 3; ++k) {
        if (r == top && c == left) {
          random = random * 1664525U + 1013904223U;
          scene[r][c][k] = (unsigned char)(40 + (random >> 16) % 160);
        } else {
          scene[r][c][k] = scene[top][left][k];
        }
        redFirst[r][c][2 - k] = scene[r][c][k];
      }
      scene[r][c][3] = (unsigned char)(r + c);
      grayScene[r][c] = scene[r][c][1];
    }
  }
}

// What the camera sees with its top-left pixel at (x, y); the rows are those of the scene.
static inline framequilt_frame frameAt(int x, int y, int32_t order) {
  framequilt_frame frame = {.size = sizeof frame, .rows = kRows, .cols = kCols, .order = order};
  if (order == FRAMEQUILT_BGRA) {
    frame.pixels = scene[y][x];
    frame.channels = 4;
    frame.stride_bytes = sizeof scene[0];
  } else if (order == FRAMEQUILT_RGB) {
    frame.pixels = redFirst[y][x];
    frame.channels = 3;
    frame.stride_bytes = sizeof redFirst[0];
  } else {
    frame.pixels = &grayScene[y][x];
    frame.channels = 1;
    frame.stride_bytes = sizeof grayScene[0];
  }
  return frame;
}

static inline framequilt_options optionsFor(int32_t channels) {
  framequilt_options options;
  CHECK_NUMBER(framequilt_init_options(&options, sizeof options), FRAMEQUILT_OK);
  options.rows = kRows;
  options.cols = kCols;
  options.channels = channels;
  options.backend = FRAMEQUILT_BACKEND_HOST;
  return options;
}

// Ends the program where it cannot: nothing can be tested then.
static inline framequilt_session* openWith(const framequilt_options* options) {
  framequilt_session* session = NULL;
  CHECK_NUMBER(framequilt_open(options, &session), FRAMEQUILT_OK);
  if (session == NULL) {
    printf("cannot be opened: %s\n", framequilt_last_error(NULL));
    exit(1);
  }
  return session;
}

static inline framequilt_session* openGray(void) {
  const framequilt_options options = optionsFor(1);
  return openWith(&options);
}

static inline framequilt_result addFrame(framequilt_session* session,
                                         const framequilt_frame* frame) {
  framequilt_result result = {.size = sizeof result};
  CHECK_NUMBER(framequilt_add(session, frame, &result), FRAMEQUILT_OK);
  return result;
}

static inline framequilt_result addGray(framequilt_session* session, int x, int y) {
  const framequilt_frame frame = frameAt(x, y, FRAMEQUILT_GRAY);
  return addFrame(session, &frame);
}

// A session with frames at (100, 100) and (200, 140).
static inline framequilt_session* openJoined(void) {
  framequilt_session* session = openGray();
  CHECK_NUMBER(addGray(session, 100, 100).verdict, FRAMEQUILT_WAITING);
  CHECK_NUMBER(addGray(session, 200, 140).verdict, FRAMEQUILT_JOINED);
  return session;
}

static inline framequilt_view viewOf(framequilt_session* session) {
  framequilt_view view = {.size = sizeof view};
  CHECK_NUMBER(framequilt_view_mosaic(session, &view), FRAMEQUILT_OK);
  return view;
}

static inline void closeSession(framequilt_session* session) {
  CHECK_NUMBER(framequilt_close(session), FRAMEQUILT_OK);
}
