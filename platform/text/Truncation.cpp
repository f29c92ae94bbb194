#include "platform/text/Truncation.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kqu::platform {

namespace {
constexpr std::string_view ellipsis = "\xE2\x80\xA6";
/// Texts of up to so many bytes are looked at whole.
constexpr std::size_t shortText = 2048;

/// One end of the text that is long enough to fill the line by itself, cut into clusters.
class TextEnd {
  public:
    TextEnd(TextLayout& layout, std::string_view part) : source_(part), plain_(part) {
        for (const std::size_t cluster : layout.Clusters(plain_))
            bounds_.push_back(plain_.places[cluster]);
    }

    [[nodiscard]] std::size_t Clusters() const { return bounds_.size() - 1; }

    // The first or the last so many clusters, as they are in the source and as they are laid out.
    [[nodiscard]] std::string_view First(std::size_t count) const {
        return source_.substr(0, bounds_[count].inSource);
    }
    [[nodiscard]] std::string_view PlainFirst(std::size_t count) const {
        return std::string_view(plain_.utf8).substr(0, bounds_[count].inLine);
    }
    [[nodiscard]] std::string_view Last(std::size_t count) const {
        return source_.substr(bounds_[Clusters() - count].inSource);
    }
    [[nodiscard]] std::string_view PlainLast(std::size_t count) const {
        return std::string_view(plain_.utf8).substr(bounds_[Clusters() - count].inLine);
    }

  private:
    std::string_view source_;
    PlainText plain_;
    std::vector<PlainText::Place> bounds_;
};

/// How much of a text is kept: so many clusters at its start and at its end.
struct Kept {
    std::size_t first = 0;
    std::size_t last = 0;
};

class Shortening {
  public:
    Shortening(TextLayout& layout, std::string_view text, int size, int limit, Giving giving)
        : layout_(layout),
          size_(size),
          limit_(limit),
          giving_(giving),
          whole_(text),
          start_(layout, StartOf(text, Share(text))),
          end_(layout, EndOf(text, Share(text))) {}

    [[nodiscard]] std::string Result() {
        if (!Fits({}))
            return {};
        const Kept kept = Widest(Balanced(MostThatFit()));
        return std::string(start_.First(kept.first)).append(ellipsis).append(end_.Last(kept.last));
    }

  private:
    /// Bytes of each end that are looked at: far more than fits, so that the text between them
    /// never matters.
    [[nodiscard]] std::size_t Share(std::string_view text) const {
        if (text.size() <= shortText)
            return text.size();
        return std::max(shortText, TextLayout::Enough(text, limit_).size());
    }

    [[nodiscard]] Kept Balanced(std::size_t count) const {
        return giving_ == Giving::End ? Kept{count, 0} : Kept{count - count / 2, count / 2};
    }

    /// Something has to be taken out, or it would not be a shortened text.
    [[nodiscard]] bool IsShorter(Kept kept) const {
        return kept.first <= start_.Clusters() && kept.last <= end_.Clusters() &&
               start_.First(kept.first).size() + end_.Last(kept.last).size() < whole_.size();
    }

    [[nodiscard]] double WidthOf(Kept kept) {
        line_.assign(start_.PlainFirst(kept.first));
        line_.append(ellipsis).append(end_.PlainLast(kept.last));
        return layout_.WidthOnce(line_, size_);
    }

    [[nodiscard]] bool Fits(Kept kept) { return IsShorter(kept) && WidthOf(kept) <= limit_; }

    /// The largest number of clusters, evenly from both ends, that fits. The search guesses by
    /// width and halves what is left at every other step, so that no text makes it slow.
    [[nodiscard]] std::size_t MostThatFit() {
        std::size_t fits = 0;
        double fitWidth = WidthOf({});
        std::size_t tooMany = start_.Clusters() + 1;
        double tooWide =
            layout_.WidthOnce(std::string(start_.PlainFirst(start_.Clusters())), size_);
        for (bool guess = true; tooMany - fits > 1; guess = !guess) {
            std::size_t middle = fits + (tooMany - fits) / 2;
            if (guess && tooWide > fitWidth)
                middle = Between(fits, tooMany, (limit_ - fitWidth) / (tooWide - fitWidth));
            const Kept kept = Balanced(middle);
            const double width = IsShorter(kept) ? WidthOf(kept) : tooWide + 1;
            if (width <= limit_) {
                fits = middle;
                fitWidth = width;
            } else {
                tooMany = middle;
                tooWide = width;
            }
        }
        return fits;
    }

    static std::size_t Between(std::size_t low, std::size_t high, double share) {
        const double distance = static_cast<double>(high - low) * std::clamp(share, 0.0, 1.0);
        return std::clamp(low + static_cast<std::size_t>(std::lround(distance)), low + 1, high - 1);
    }

    /// The next cluster of one side may still fit where that of the other does not.
    [[nodiscard]] Kept Widest(Kept kept) {
        // Thin characters on one side end soon; a flood of characters without any width does not.
        constexpr int mostSteps = 64;
        for (int step = 0; giving_ == Giving::Middle && step < mostSteps; ++step) {
            if (const Kept more{kept.first + 1, kept.last}; Fits(more))
                kept = more;
            else if (const Kept other{kept.first, kept.last + 1}; Fits(other))
                kept = other;
            else
                break;
        }
        return kept;
    }

    TextLayout& layout_;
    int size_;
    int limit_;
    Giving giving_;
    std::string_view whole_;
    TextEnd start_;
    TextEnd end_;
    std::string line_;
};

bool IsTooWide(TextLayout& layout, std::string_view text, int size, int limit) {
    // Where the start alone is too wide, the rest need not be measured.
    const std::string_view start = TextLayout::Enough(text, limit);
    if (start.size() < text.size() && layout.WidthOnce(PlainText(start).utf8, size) > limit)
        return true;
    return layout.WidthOnce(PlainText(text).utf8, size) > limit;
}
} // namespace

std::string Truncated(TextLayout& layout, std::string_view text, int size, int limit,
                      Giving giving) {
    if (text.empty() || !IsTooWide(layout, text, size, limit))
        return std::string(text);
    return Shortening(layout, text, size, limit, giving).Result();
}

} // namespace kqu::platform
