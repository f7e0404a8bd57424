// Finds people by a column of names.
import { useEffect, useState } from "preact/hooks";
import { type FoundNames, findNames } from "./api";
import { Dialog, Lines, Trouble, openDialog, sentence } from "./dialogs";
import { go } from "./place";
import { number, t } from "./texts";

/** The names of a text: one on each line or in each cell; of a single line, between commas and semicolons. */
export const namesIn = (text: string) =>
    text
        .trim()
        .split(/[\n\r\t]/.test(text.trim()) ? /[\n\r\t]+/ : /[,;]+/)
        .map(name => name.trim().replace(/^"(.*)"$/, "$1"))
        .filter(name => name !== "");

function NamesDialog(props: { text: string; onClose: () => void }) {
    const [text, setText] = useState(props.text);
    const [found, setFound] = useState<FoundNames>();
    const [choices, setChoices] = useState<Record<string, string>>({});
    const [trouble, setTrouble] = useState("");
    const names = namesIn(text);
    const chosen = Object.values(choices).filter(id => id !== "");

    const show = async (shown: FoundNames) => {
        props.onClose();
        await go("/directory", { among: shown.result });
    };
    const find = async () => {
        try {
            setTrouble("");
            const answer = await findNames(names);
            if (answer.missing.length === 0 && answer.ambiguous.length === 0) {
                await show(answer);
            } else {
                setChoices({});
                setFound(answer);
            }
        } catch (error) {
            setTrouble(sentence(error));
        }
    };
    const showFound = async () => {
        try {
            if (found) {
                await show(chosen.length > 0 ? await findNames(names.map(name => choices[name] || name)) : found);
            }
        } catch (error) {
            setTrouble(sentence(error));
        }
    };
    useEffect(() => {
        if (names.length > 0) {
            void find();
        }
    }, []);
    return (
        <Dialog title={t("names.title")} onClose={props.onClose}>
            <form
                onSubmit={event => {
                    event.preventDefault();
                    void (found ? showFound() : find());
                }}
            >
                <Trouble text={trouble} />
                <div class="field">
                    <label for="names">{t("names.label")}</label>
                    <textarea
                        id="names"
                        dir="auto"
                        rows={6}
                        value={text}
                        onInput={event => {
                            setText(event.currentTarget.value);
                            setFound(undefined);
                        }}
                    />
                </div>
                {found && (
                    <div role="status">
                        <p>{t("names.found", { count: found.total, all: names.length })}</p>
                        {found.missing.length > 0 && (
                            <section>
                                <h3>{t("names.missing", { count: found.missing.length })}</h3>
                                <Lines label={t("names.missing", { count: found.missing.length })} lines={found.missing} />
                            </section>
                        )}
                        {found.ambiguous.length > 0 && <h3>{t("names.ambiguous")}</h3>}
                        {found.ambiguous.map((one, i) => (
                            <div class="field" key={one.name}>
                                <label for={`name-${i}`} dir="auto">
                                    {one.name}
                                </label>
                                <select
                                    id={`name-${i}`}
                                    value={choices[one.name] ?? ""}
                                    onChange={event => setChoices({ ...choices, [one.name]: event.currentTarget.value })}
                                >
                                    <option value="">{t("names.nobody")}</option>
                                    {one.people.map(person => (
                                        <option key={person.id} value={`id:${person.id}`}>
                                            {[person.login, person["name"], person["department"], person["title"]]
                                                .filter(Boolean)
                                                .join(" · ")}
                                        </option>
                                    ))}
                                </select>
                            </div>
                        ))}
                    </div>
                )}
                <div class="buttons">
                    <button type="button" onClick={props.onClose}>
                        {t("cancel")}
                    </button>
                    {found ? (
                        <button class="main" disabled={found.total + chosen.length === 0}>
                            {t("names.show", { count: number(found.total + chosen.length) })}
                        </button>
                    ) : (
                        <button class="main" disabled={names.length === 0}>
                            {t("names.find")}
                        </button>
                    )}
                </div>
            </form>
        </Dialog>
    );
}

export const askNames = (text = "") => openDialog(close => <NamesDialog text={text} onClose={close} />);
