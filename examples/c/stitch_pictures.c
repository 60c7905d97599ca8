// SPDX-License-Identifier: Apache-2.0
// Stitches pictures in the order given: stitch_pictures MOSAIC.png FRAME.ppm FRAME.ppm ...
//
// The frames are PPM or PGM files of 8 bits, which many programs write; they all have one size.
#include <ctype.h>
#include <framequilt/framequilt_c.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

typedef struct Picture {
  unsigned char* pixels;  // Released with free().
  int32_t rows, cols, channels;
} Picture;

static int complain(const char* where, const char* what) {
  fprintf(stderr, "%s: %s\n", where, what);
  return 0;
}

// The next number of a header, where comments may stand; -1 where there is none.
static int32_t headerNumber(FILE* file) {
  int next = fgetc(file);
  for (; isspace(next) || next == '#'; next = fgetc(file)) {
    if (next == '#') {
      while (next != '\n' && next != EOF) next = fgetc(file);
    }
  }
  int32_t number = -1;
  for (; next >= '0' && next <= '9' && number < 100000; next = fgetc(file)) {
    number = (number < 0 ? 0 : number) * 10 + (next - '0');
  }
  return number;  // One blank behind it is read, too: pixels follow the last number.
}

static int readFrom(FILE* file, const char* path, Picture* picture) {
  char kind[3] = "";
  if (fread(kind, 1, 2, file) != 2 || (strcmp(kind, "P5") != 0 && strcmp(kind, "P6") != 0)) {
    return complain(path, "no binary PGM or PPM file: convert it first");
  }
  picture->channels = kind[1] == '6' ? 3 : 1;
  picture->cols = headerNumber(file);
  picture->rows = headerNumber(file);
  const int32_t brightest = headerNumber(file);
  if (picture->cols < 1 || picture->rows < 1 || picture->cols > 12000 || picture->rows > 12000 ||
      brightest != 255) {
    return complain(path, "not 8 bits a channel, or not of a usual size: convert it first");
  }
  const size_t bytes = (size_t)picture->rows * (size_t)picture->cols * (size_t)picture->channels;
  picture->pixels = malloc(bytes);
  if (picture->pixels == NULL) return complain(path, "out of memory");
  if (fread(picture->pixels, 1, bytes, file) != bytes) {
    free(picture->pixels);
    return complain(path, "ends too early: write it again");
  }
  return 1;
}

// 1 and a picture to be released, or 0 after an error.
static int readPicture(const char* path, Picture* picture) {
  FILE* file = fopen(path, "rb");
  if (file == NULL) return complain(path, "cannot be opened");
  const int done = readFrom(file, path, picture);
  fclose(file);
  return done;
}

// The session is opened with the size of the first picture.
static int openFor(const Picture* first, framequilt_session** session) {
  framequilt_options options;
  framequilt_init_options(&options, sizeof options);
  options.rows = first->rows;
  options.cols = first->cols;
  options.channels = first->channels;
  return framequilt_open(&options, session) == FRAMEQUILT_OK ||
         complain("open", framequilt_last_error(NULL));
}

static int add(framequilt_session* session, const char* path, const Picture* picture) {
  const framequilt_frame frame = {
      .size = sizeof frame,
      .pixels = picture->pixels,
      .rows = picture->rows,
      .cols = picture->cols,
      .channels = picture->channels,
      .order = picture->channels == 3 ? FRAMEQUILT_RGB : FRAMEQUILT_GRAY};
  framequilt_result result = {.size = sizeof result};
  if (framequilt_add(session, &frame, &result) != FRAMEQUILT_OK) {
    return complain(path, framequilt_last_error(session));
  }
  if (result.verdict == FRAMEQUILT_JOINED) {
    printf("%s: joined at (%d, %d)\n", path, result.placement.x, result.placement.y);
  } else if (result.verdict == FRAMEQUILT_REFUSED) {
    char text[FRAMEQUILT_EXPLANATION_BYTES];
    framequilt_words words = {.size = sizeof words};
    framequilt_explain(&result, text, sizeof text);
    framequilt_reason_words(result.reason, &words);
    printf("%s: refused, %s\n  %s\n", path, text, words.advice);
  } else {
    printf("%s: first frame\n", path);
  }
  return 1;
}

static int saveMosaic(framequilt_session* session, const char* path) {
  framequilt_view mosaic = {.size = sizeof mosaic};
  if (framequilt_view_mosaic(session, &mosaic) != FRAMEQUILT_OK ||
      framequilt_save_mosaic(session, path) != FRAMEQUILT_OK) {
    return complain("mosaic", framequilt_last_error(session));
  }
  printf("mosaic of %d x %d pixels\n", mosaic.cols, mosaic.rows);
  return 1;
}

int main(int count, char** arguments) {
  if (count < 3) {
    return !complain("usage", "stitch_pictures MOSAIC.png FRAME.ppm FRAME.ppm ...");
  }
  framequilt_session* session = NULL;
  int done = 1;
  for (int i = 2; i < count && done; ++i) {
    Picture picture;
    done = readPicture(arguments[i], &picture);
    if (!done) break;
    done = (session != NULL || openFor(&picture, &session)) && add(session, arguments[i], &picture);
    free(picture.pixels);
  }
  done = done && saveMosaic(session, arguments[1]);
  framequilt_close(session);
  return done ? 0 : 1;
}
