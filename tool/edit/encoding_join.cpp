#include "tool/edit/encoding_join.h"

namespace tool {
namespace {

// The label of a part's picture or sound in the graph, such as "[v3]".
std::string Label(char kind, size_t index)
{
    std::string label = "[";
    label += kind;
    label += std::to_string(index);
    label += ']';
    return label;
}

// ffmpeg's name for a part's track, such as "[3:v:0]".
std::string Input(size_t index, const char* kind)
{
    return std::string("[").append(std::to_string(index)).append(":").append(kind).append(":0]");
}

// Builds the filter graph that brings all parts to the same format.
class JoinGraph
{
public:
    JoinGraph(const std::vector<PartDescription>& parts) : m_parts(parts)
    {
        for (const PartDescription& part : parts) {
            if (part.HasPicture() && m_picture == nullptr) {
                m_picture = &part;
            }
            if (part.HasSound() && m_sound == nullptr) {
                m_sound = &part;
            }
        }
    }

    const PartDescription* Picture() const { return m_picture; }
    const PartDescription* Sound() const { return m_sound; }
    std::string Text() const;

private:
    std::string PictureChain(size_t index) const;
    std::string SoundChain(size_t index) const;

    const std::vector<PartDescription>& m_parts;
    const PartDescription* m_picture = nullptr;
    const PartDescription* m_sound = nullptr;
};

std::string JoinGraph::PictureChain(size_t index) const
{
    const std::string width = std::to_string(m_picture->width);
    const std::string height = std::to_string(m_picture->height);
    const std::string size = width + ":" + height;
    const std::string even = ",format=yuv420p,setsar=1";
    if (!m_parts[index].HasPicture()) {
        return "color=black:s=" + width + "x" + height + ":r=" + m_picture->rate +
               ":d=" + std::to_string(m_parts[index].duration) + even;
    }
    // The largest even size that fits. ffmpeg before 4.3 has no option for that.
    const std::string fitting = "'round(min(" + width + "," + height + "*a)/2)*2':'round(min(" +
                                height + "," + width + "/a)/2)*2'";
    return Input(index, "v") + "fps=" + m_picture->rate +
           ":start_time=0,scale=trunc(iw*sar/2)*2:ih,scale=" + fitting + ",pad=" + size +
           ":(ow-iw)/2:(oh-ih)/2" + even;
}

std::string JoinGraph::SoundChain(size_t index) const
{
    const std::string rate = std::to_string(m_sound->sampleRate);
    const std::string shape =
        "aformat=sample_fmts=fltp:sample_rates=" + rate + ":channel_layouts=" + m_sound->channels;
    if (!m_parts[index].HasSound()) {
        // The length does not matter: concat pads the sound to the length of the picture.
        return "anullsrc=r=" + rate + ":cl=" + m_sound->channels + ",atrim=end=0.01," + shape;
    }
    return Input(index, "a") + "aresample=" + rate + ":async=1:first_pts=0," + shape;
}

std::string JoinGraph::Text() const
{
    std::string text;
    std::string inputs;
    for (size_t i = 0; i < m_parts.size(); ++i) {
        if (m_picture != nullptr) {
            text += PictureChain(i) + Label('v', i) + ";";
            inputs += Label('v', i);
        }
        if (m_sound != nullptr) {
            text += SoundChain(i) + Label('a', i) + ";";
            inputs += Label('a', i);
        }
    }
    text += inputs;
    text += "concat=n=" + std::to_string(m_parts.size());
    text += m_picture != nullptr ? ":v=1" : ":v=0";
    text += m_sound != nullptr ? ":a=1" : ":a=0";
    text += m_picture != nullptr ? "[v]" : "";
    text += m_sound != nullptr ? "[a]" : "";
    return text;
}

} // namespace

std::vector<std::string> EncodingJoin(const std::vector<std::string>& urls,
                                      const std::vector<PartDescription>& parts)
{
    std::vector<std::string> result;
    for (const std::string& url : urls) {
        // All decoders exist at once, each with a set of frames per thread.
        result.insert(result.end(), {"-threads", "1", "-i", url});
    }
    const JoinGraph graph(parts);
    result.insert(result.end(), {"-filter_complex", graph.Text()});
    if (graph.Picture() != nullptr) {
        result.insert(result.end(), {"-map", "[v]", "-c:v", "libx264", "-preset", "ultrafast",
                                     "-crf", "20", "-r", graph.Picture()->rate});
    }
    if (graph.Sound() != nullptr) {
        result.insert(result.end(), {"-map", "[a]", "-c:a", "aac"});
    }
    return result;
}

} // namespace tool
