#include "scene.hpp"

#include <cstring>

#include <opencv2/imgproc.hpp>

namespace scene {

cv::Mat make_pattern(int width, int height, uint64_t seed) {
    cv::RNG rng(seed);
    // Smooth random relief at three scales keeps every neighbourhood
    // distinct, so that matches are rarely ambiguous.
    cv::Mat relief(height, width, CV_32F, cv::Scalar(128));
    for (int cell : {24, 10, 4}) {
        cv::Mat coarse(height / cell + 2, width / cell + 2, CV_32F);
        rng.fill(coarse, cv::RNG::UNIFORM, -40.0 * cell / 24 - 15, 40.0 * cell / 24 + 15);
        cv::Mat up;
        cv::resize(coarse, up, cv::Size(width, height), 0, 0, cv::INTER_CUBIC);
        relief += up;
    }
    cv::Mat img;
    relief.convertTo(img, CV_8U);
    const int shapes = width * height / 150;
    for (int k = 0; k < shapes; ++k) {
        const cv::Point p(rng.uniform(0, width), rng.uniform(0, height));
        // Dark or bright, never mid-grey: strong edges and blobs.
        const int level = rng.uniform(0, 70);
        const cv::Scalar grey(rng.uniform(0, 2) ? level : 255 - level);
        switch (rng.uniform(0, 4)) {
        case 0:
            cv::circle(img, p, rng.uniform(2, 12), grey, cv::FILLED, cv::LINE_AA);
            break;
        case 1:
            cv::rectangle(img, p, p + cv::Point(rng.uniform(3, 18), rng.uniform(3, 18)), grey,
                          cv::FILLED);
            break;
        case 2:
            cv::line(img, p, cv::Point(rng.uniform(0, width), rng.uniform(0, height)), grey,
                     rng.uniform(1, 4), cv::LINE_AA);
            break;
        default:
            cv::putText(img, std::string(1, char('A' + rng.uniform(0, 26))), p,
                        cv::FONT_HERSHEY_SIMPLEX, rng.uniform(0.4, 1.0), grey, 2, cv::LINE_AA);
        }
    }
    cv::GaussianBlur(img, img, cv::Size(3, 3), 0.6);
    return img;
}

cv::Mat make_background(int width, int height, uint64_t seed) {
    cv::RNG rng(seed);
    cv::Mat coarse(height / 16 + 2, width / 16 + 2, CV_32F);
    rng.fill(coarse, cv::RNG::UNIFORM, 100, 140);
    cv::Mat smooth;
    cv::resize(coarse, smooth, cv::Size(width, height), 0, 0, cv::INTER_CUBIC);
    cv::Mat noise(height, width, CV_32F);
    rng.fill(noise, cv::RNG::NORMAL, 0, 1);
    cv::Mat out;
    cv::Mat(smooth + noise).convertTo(out, CV_8U);
    return out;
}

cv::Matx23d placement(cv::Size pattern, double angle_deg, double scale, cv::Point2d centre) {
    const cv::Point2f half(pattern.width / 2.0f, pattern.height / 2.0f);
    cv::Matx23d m = cv::getRotationMatrix2D(half, angle_deg, scale);
    m(0, 2) += centre.x - half.x;
    m(1, 2) += centre.y - half.y;
    return m;
}

cv::Mat paste(const cv::Mat &background, const cv::Mat &pattern,
              const cv::Matx23d &pattern_to_frame) {
    cv::Mat warped, coverage;
    cv::warpAffine(pattern, warped, pattern_to_frame, background.size(), cv::INTER_LINEAR,
                   cv::BORDER_CONSTANT, cv::Scalar(0));
    cv::warpAffine(cv::Mat(pattern.size(), CV_32F, cv::Scalar(1.0f)), coverage,
                   pattern_to_frame, background.size(), cv::INTER_LINEAR, cv::BORDER_CONSTANT,
                   cv::Scalar(0));
    cv::Mat bg, fg, out;
    background.convertTo(bg, CV_32F);
    warped.convertTo(fg, CV_32F);
    // warped already carries the coverage weight at the edges.
    cv::Mat(bg.mul(1.0f - coverage) + fg).convertTo(out, CV_8U);
    return out;
}

Block::Block(const cv::Mat &grey, uint8_t format) {
    const size_t pixel_bytes = size_t(grey.total()) * (format == IMAGE_FORMAT_RGB24 ? 3 : 1);
    bytes_.assign((VEXO_IMAGE_HEADER_SIZE + pixel_bytes + 3) / 4, 0u);
    auto *raw = reinterpret_cast<uint8_t *>(bytes_.data());
    raw[8] = VEXO_IMAGE_KIND;
    raw[9] = format;
    for (int k = 0; k < 4; ++k) {
        raw[16 + k] = uint8_t(uint32_t(grey.cols) >> (24 - 8 * k));
        raw[20 + k] = uint8_t(uint32_t(grey.rows) >> (24 - 8 * k));
    }
    uint8_t *px = raw + VEXO_IMAGE_HEADER_SIZE;
    for (int r = 0; r < grey.rows; ++r)
        for (int c = 0; c < grey.cols; ++c) {
            const uint8_t v = grey.at<uint8_t>(r, c);
            if (format == IMAGE_FORMAT_RGB24) {
                *px++ = v;
                *px++ = v;
                *px++ = v;
            } else {
                *px++ = v;
            }
        }
}

} // namespace scene
