/*
 * Finds what moves in front of a fixed camera: a running average of the frames is the background, and what differs from
 * it moves. The frames are drawn here, a disc that crosses a noisy scene; a program would take them from its camera.
 *
 *   cc background_average.c $(pkg-config --cflags --libs orvcv)
 *   background_average [DIRECTORY]     also writes frames, background and difference there as PGM files
 */
#include <orvcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 320, height = 200, frameCount = 48, radius = 24, threshold = 40 };

static uint8_t frame[height][width], background[height][width], difference[height][width];
static float average[height][width]; /* starts at zero */

static int discX(int time) { return 10 + 6 * time; }
static int discY(int time) { return 60 + time; }

static void drawFrame(int time) {
  static uint32_t random = 1;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const int dx = x - discX(time), dy = y - discY(time);
      const int tiles = ((x / 40 + y / 40) % 2) * 40;
      const int scene = dx * dx + dy * dy < radius * radius ? 235 : 40 + tiles + y / 3;
      random = random * 1664525u + 1013904223u;
      frame[y][x] = (uint8_t)(scene + (int)(random >> 28));
    }
}

static void writePgm(const char* directory, const char* name, int number, const void* samples) {
  char path[4096];
  snprintf(path, sizeof path, "%s/%s%02d.pgm", directory, name, number);
  FILE* file = fopen(path, "wb");
  if (file == NULL || fprintf(file, "P5 %d %d 255\n", width, height) < 0 ||
      fwrite(samples, width, height, file) != height || fclose(file) != 0) {
    perror(path);
    exit(1);
  }
}

int main(int argc, char** argv) {
  const OrvSize roi = {width, height};

  for (int time = 0; time < frameCount; ++time) {
    /* The first frame replaces the zeros, each later one moves the average by a twelfth of the change. */
    const float alpha = time == 0 ? 1.0f : 1.0f / 12;
    drawFrame(time);
    OrvStatus status = orviAddWeighted_8u32f_C1IR(frame[0], width, average[0], width * (int)sizeof(float), roi, alpha);
    if (status == orvStsOk) {
      for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) background[y][x] = (uint8_t)(average[y][x] + 0.5f);
      status = orviAbsDiff_8u_C1R(frame[0], width, background[0], width, difference[0], width, roi);
    }
    if (status != orvStsOk) {
      fprintf(stderr, "the library answered status %d\n", (int)status);
      return 1;
    }
    if (argc > 1)
      writePgm(argv[1], "frame", time, frame);
  }

  /* Where is the disc? The middle of the pixels that differ and are bright; its trail differs less. */
  long count = 0, sumX = 0, sumY = 0;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      if (difference[y][x] >= threshold && frame[y][x] > 200) {
        ++count;
        sumX += x;
        sumY += y;
      }
  if (argc > 1) {
    writePgm(argv[1], "background", 0, background);
    writePgm(argv[1], "difference", 0, difference);
  }
  if (count == 0) {
    puts("nothing moves");
    return 1;
  }
  printf("%ld pixels move, around (%ld, %ld); the disc was drawn at (%d, %d)\n", count, sumX / count, sumY / count,
         discX(frameCount - 1), discY(frameCount - 1));
  return labs(sumX / count - discX(frameCount - 1)) + labs(sumY / count - discY(frameCount - 1)) > 4;
}
