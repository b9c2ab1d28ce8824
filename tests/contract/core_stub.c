/* A core library that answers the cache query as told at compile time: STATUS, and BYTES where that is 0. */
int orvGetMaxCacheSizeB(int* bytes);
int orvGetMaxCacheSizeB(int* bytes) {
  if (STATUS == 0)
    *bytes = BYTES;
  return STATUS;
}
