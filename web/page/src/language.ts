// The language of the reader.

export const languages: Record<string, string> = { en: "English", de: "Deutsch", "zh-CN": "简体中文" };

function choose(): string {
    const kept = localStorage.getItem("language");
    for (const wanted of kept ? [kept] : navigator.languages) {
        for (const language of Object.keys(languages)) {
            if (wanted === language || wanted.split("-")[0] === language.split("-")[0]) {
                return language;
            }
        }
    }
    return "en";
}

export const language = choose();
document.documentElement.lang = language;
