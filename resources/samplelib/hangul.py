"""Hangul: the conjoining jamo and syllables made of them."""

from .maker import number

LEADS, VOWELS, TAILS = range(0x1100, 0x1113), range(0x1161, 0x1176), range(0x11A8, 0x11C3)
SYLLABLES, PER_LEAD, PER_VOWEL = 0xAC00, 21 * 28, 28
POSITIONS = {"CHOSEONG": "cho", "JUNGSEONG": "jung", "JONGSEONG": "jong"}
LEAD_LETTERS = "g gg n d dd r m b bb s ss  j jj c k t p h".split(" ")
VOWEL_LETTERS = "a ae ya yae eo e yeo ye o wa wae oe yo u weo we wi yu eu yi i".split(" ")
TAIL_LETTERS = " g gg gs n nj nh d l lg lm lb ls lt lp lh m b bs s ss ng j c k t p h".split(" ")

# Leads and vowels of the open syllables that every test text has.
PLAIN_LEADS = (0, 2, 3, 5, 6, 7, 9, 11, 12, 14, 15, 16, 17, 18)
PLAIN_VOWELS = (0, 8, 13, 20)
# Words of the trade (typeface, letter, Korean, stroke, bold, consonant, final, ...) and some with rich finals.
WORDS = ("글꼴 활자 글자 한국어 한글 문장 쓰기 획 굵은 가는 표 유니코드 닿소리 홀소리 받침 읽기 없다 있다 값 삶 앉다 흙 "
         "꽃 빛 뿌리 깊은 나무 샘")


def jamo_name(title):
    """"HANGUL CHOSEONG SSANGKIYEOK" as "ssangkiyeokcho-ko"."""
    _, position, letters = title.split(" ", 2)
    return letters.replace("-", "").lower() + POSITIONS[position] + "-ko"


def jamo(maker):
    result = []
    for code in list(LEADS) + list(VOWELS) + list(TAILS):
        title = maker.sources.characters[code].title
        _, position, letters = title.split(" ", 2)
        parts = letters.split("-")
        if letters.startswith("SSANG"):
            parts = [letters[len("SSANG"):]] * 2
        parts = [part.lower() + POSITIONS[position] + "-ko" for part in parts] if len(parts) > 1 else []
        result.append(maker.encoded(code, jamo_name(title), sub_category="Jamo", script="hangul", components=parts))
    return result


def syllable_title(code):
    index = code - SYLLABLES
    return (LEAD_LETTERS[index // PER_LEAD], VOWEL_LETTERS[index % PER_LEAD // PER_VOWEL],
            TAIL_LETTERS[index % PER_VOWEL])


def syllable(maker, code):
    index = code - SYLLABLES
    letters = "".join(syllable_title(code))
    parts = [LEADS[index // PER_LEAD], VOWELS[index % PER_LEAD // PER_VOWEL]]
    if index % PER_VOWEL:
        parts.append(TAILS[index % PER_VOWEL - 1])
    glyph = maker.ligature(letters + "-ko", parts, sub_category="Syllable", script="hangul",
                           description="HANGUL SYLLABLE " + letters.upper())
    glyph.codes = [code]
    return glyph


def glyphs(maker):
    wanted = {SYLLABLES + lead * PER_LEAD + vowel * PER_VOWEL for lead in PLAIN_LEADS for vowel in PLAIN_VOWELS}
    wanted.update(ord(c) for c in WORDS if c != " ")
    return number(jamo(maker) + [syllable(maker, code) for code in sorted(wanted)], "ko")
