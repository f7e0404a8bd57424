// Whether the server answers.
import { useEffect, useState } from "preact/hooks";
import { noteChange } from "./place";
import { t } from "./texts";

const kPause = 2000;
let isAway = false;
let say: (isAway: boolean) => void = () => {};

async function look(): Promise<void> {
    const isBack = await fetch("/api/v1/health").then(
        answer => answer.ok,
        () => false,
    );
    if (!isBack) {
        setTimeout(look, kPause);
        return;
    }
    isAway = false;
    say(false);
    // What could not be read is read now; who is not signed in any more is asked to.
    noteChange();
}

/** Notes that a request got no answer. Once one is there again, all that is shown is read anew. */
export function noteSilence(): void {
    if (!isAway) {
        isAway = true;
        say(true);
        setTimeout(look, kPause);
    }
}

/** Says so while it lasts. */
export function Silence() {
    const [isShown, setShown] = useState(isAway);
    useEffect(() => {
        say = setShown;
    }, []);
    return (
        <div class="silence" role="status">
            {isShown && <p class="warning">{t("offline.waits")}</p>}
        </div>
    );
}
