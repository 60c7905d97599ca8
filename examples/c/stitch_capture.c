// SPDX-License-Identifier: Apache-2.0
// Stitches a capture frame by frame, says where each frame lies or why it is not joined, and saves
// the mosaic.
#include <framequilt/framequilt_c.h>
#include <stdio.h>

enum { kSceneRows = 600, kSceneCols = 1200, kRows = 360, kCols = 480 };
static unsigned char scene[kSceneRows][kSceneCols];

// Random squares of 8 x 8 pixels.
static void paintScene(void) {
  uint32_t random = 7;
  for (int r = 0; r < kSceneRows; ++r) {
    for (int c = 0; c < kSceneCols; ++c) {
      if (r % 8 != 0) {
        scene[r][c] = scene[r - 1][c];
      } else if (c % 8 != 0) {
        scene[r][c] = scene[r][c - 1];
      } else {
        random = random * 1664525U + 1013904223U;
        scene[r][c] = (unsigned char)(40 + (random >> 16) % 160);
      }
    }
  }
}

static int failed(const framequilt_session* session) {
  fprintf(stderr, "%s\n", framequilt_last_error(session));
  return 1;
}

// Tells about one frame of the camera, whose top-left corner lies at (x, y) in the scene.
static int addFrame(framequilt_session* session, int x, int y) {
  const framequilt_frame frame = {.size = sizeof frame,
                                  .pixels = &scene[y][x],
                                  .stride_bytes = kSceneCols,
                                  .rows = kRows,
                                  .cols = kCols,
                                  .channels = 1,
                                  .order = FRAMEQUILT_GRAY};
  framequilt_result result = {.size = sizeof result};
  if (framequilt_add(session, &frame, &result) != FRAMEQUILT_OK) return failed(session);
  if (result.verdict == FRAMEQUILT_JOINED) {
    printf("joined at (%d, %d)\n", result.placement.x, result.placement.y);
  } else if (result.verdict == FRAMEQUILT_REFUSED) {
    char text[FRAMEQUILT_EXPLANATION_BYTES];
    framequilt_explain(&result, text, sizeof text);
    printf("refused, %s\n", text);
  }
  return 0;
}

int main(int count, char** arguments) {
  framequilt_options options;
  framequilt_init_options(&options, sizeof options);
  options.rows = kRows;
  options.cols = kCols;
  options.channels = 1;
  framequilt_session* session = NULL;
  if (framequilt_open(&options, &session) != FRAMEQUILT_OK) return failed(NULL);

  // A camera that moves over the scene; the last step is too wide.
  const int path[][2] = {{0, 80}, {90, 100}, {200, 110}, {700, 110}};
  paintScene();
  for (size_t i = 0; i < sizeof path / sizeof path[0]; ++i) {
    if (addFrame(session, path[i][0], path[i][1]) != 0) return 1;
  }

  framequilt_view mosaic = {.size = sizeof mosaic};
  if (framequilt_view_mosaic(session, &mosaic) != FRAMEQUILT_OK) return failed(session);
  printf("mosaic of %d x %d pixels\n", mosaic.cols, mosaic.rows);
  const char* file = count > 1 ? arguments[1] : "mosaic.png";
  if (framequilt_save_mosaic(session, file) != FRAMEQUILT_OK) return failed(session);
  framequilt_close(session);
  return 0;
}
