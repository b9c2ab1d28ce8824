// A program outside the source tree, in C++, against the installed library.
#include <orvcv.h>

#include <iostream>
#include <vector>

int main() {
  const OrvSize size = {37, 5};
  const int samples = size.width * size.height;
  std::vector<uint8_t> image;
  for (int i = 0; i < samples; ++i) image.push_back(static_cast<uint8_t>(i));
  std::vector<float> sum(image.size(), 0.5f);

  for (int frame = 0; frame < 3; ++frame)
    if (orviAdd_8u32f_C1IR(image.data(), size.width, sum.data(), size.width * 4, size) != orvStsOk)
      return 1;
  for (std::size_t i = 0; i < image.size(); ++i)
    if (sum[i] != 0.5f + 3.0f * static_cast<float>(image[i]))
      return 2;
  std::cout << "C++ program: " << orvcvGetLibVersion()->name << '\n';
}
